/// Turns an interrupt (SIGINT, SIGTERM) into a cancelled run, as a host's cancel button would.
#pragma once

#include "core/mail.h"

#include <atomic>
#include <thread>

/// While it lives, the first interrupt calls pub_cancel_extraction from a thread of its own; a second one ends the
/// program at once. One object at a time.
class interrupt_watcher
{
public:
    explicit interrupt_watcher(mail &plugin);
    ~interrupt_watcher();
    interrupt_watcher(const interrupt_watcher &) = delete;
    interrupt_watcher &operator=(const interrupt_watcher &) = delete;

    bool was_interrupted() const { return interrupted; }
    /// The same as a flag, for work of the host's own.
    const std::atomic<bool> &interrupt_flag() const { return interrupted; }

private:
    void watch();

    mail &plugin_obj;
    std::atomic<bool> interrupted{false};
    int reading_end = -1;
    int writing_end = -1;
    std::thread thread;
};
