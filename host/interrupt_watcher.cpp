#include "host/interrupt_watcher.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr char byte_interrupted = 'i';
constexpr char byte_leave = 'l';
constexpr int watched_signals[] = {SIGINT, SIGTERM};

// A signal handler may do little more than write to a pipe.
std::atomic<int> handler_pipe{-1};

void send(int pipe_end, char byte)
{
    while (write(pipe_end, &byte, 1) == -1 && errno == EINTR) {
    }
}

extern "C" void on_interrupt(int)
{
    const int errno_before = errno;
    send(handler_pipe, byte_interrupted);
    errno = errno_before;
}

} // namespace

interrupt_watcher::interrupt_watcher(mail &plugin) : plugin_obj(plugin)
{
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return; // no descriptors left: an interrupt then ends the program as it ends any
    }
    reading_end = ends[0];
    writing_end = ends[1];
    handler_pipe = writing_end;
    thread = std::thread([this] { watch(); });

    struct sigaction action = {};
    action.sa_handler = on_interrupt;
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    for (const int watched : watched_signals) {
        sigaction(watched, &action, nullptr);
    }
}

interrupt_watcher::~interrupt_watcher()
{
    if (!thread.joinable()) {
        return;
    }
    for (const int watched : watched_signals) {
        std::signal(watched, SIG_IGN); // the run is over, what is left is to say so
    }
    send(writing_end, byte_leave);
    thread.join();
    close(reading_end);
    close(writing_end);
}

void interrupt_watcher::watch()
{
    char byte = 0;
    ssize_t count = 0;
    do {
        count = read(reading_end, &byte, 1);
    } while (count == -1 && errno == EINTR);
    if (count == 1 && byte == byte_interrupted) {
        interrupted = true;
        plugin_obj.pub_cancel_extraction();
    }
}
