#include "trial/extraction_child.h"

#include "evidence/files.h"

#include <QCoreApplication>
#include <QFile>

#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace trial {

namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds time_bound{120}; // of a run that takes less than a second, on a machine that is busy
constexpr rlim_t processor_seconds = 60;
constexpr rlim_t memory_bound = rlim_t{2} << 30; // bytes
constexpr std::chrono::milliseconds look_again{2};

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool is_sanitized = true; // whose shadow memory is address space, terabytes of it
#else
constexpr bool is_sanitized = false;
#endif

QStringList arguments_of(const workplace &place, const scheme &source_scheme, const QStringList &further)
{
    QStringList arguments{QCoreApplication::applicationDirPath() + QLatin1String("/mail-extract"),
                          QStringLiteral("run"),
                          text_of(place.source()),
                          QStringLiteral("--result"),
                          text_of(place.result()),
                          QStringLiteral("--scheme"),
                          QLatin1String(source_scheme.internal_name)};
    for (const QString &user : users_of(source_scheme)) {
        arguments += {QStringLiteral("--user"), user};
    }
    return arguments + further;
}

void bound(int resource, rlim_t limit)
{
    const rlimit both{limit, limit};
    ::setrlimit(static_cast<__rlimit_resource>(resource), &both);
}

[[noreturn]] void become(std::vector<char *> words, const workplace &place)
{
    const int output = ::open(place.output().c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600); // NOLINT(*-vararg)
    ::dup2(output, STDOUT_FILENO);
    ::dup2(output, STDERR_FILENO);
    ::setenv("HOME", place.home().c_str(), 1);
    ::setenv("TMPDIR", place.home().c_str(), 1);
    ::unsetenv("XDG_RUNTIME_DIR");
    ::setenv("ASAN_OPTIONS", "detect_leaks=1:strict_string_checks=1:hard_rss_limit_mb=3072", 1);
    ::setenv("UBSAN_OPTIONS", "print_stacktrace=1", 1);
    bound(RLIMIT_CORE, 0);
    bound(RLIMIT_CPU, processor_seconds);
    if (!is_sanitized) {
        bound(RLIMIT_AS, memory_bound);
    }
    ::execv(words.front(), words.data());
    std::perror("mail-trial: starting mail-extract");
    ::_exit(127);
}

// Out: the status; the outcome learns whether the child had to be ended.
int wait_for(pid_t child, steady_clock::time_point start, std::optional<std::chrono::microseconds> killed_after,
             child_outcome &outcome)
{
    if (killed_after) {
        std::this_thread::sleep_until(start + *killed_after);
        ::kill(child, SIGKILL);
    }
    int status = 0;
    while (::waitpid(child, &status, WNOHANG) == 0) {
        if (steady_clock::now() - start > time_bound) {
            outcome.timed_out = true;
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
            break;
        }
        std::this_thread::sleep_for(look_again);
    }
    return status;
}

} // namespace

QString child_outcome::fault() const
{
    if (timed_out) {
        return QStringLiteral("it did not end in time");
    }
    if (signal != 0) {
        return QStringLiteral("it was ended by signal %1").arg(signal);
    }
    for (const char *mark : {"Sanitizer", "runtime error:", "std::bad_alloc"}) {
        if (output.contains(mark)) {
            return QStringLiteral("it printed a report of \"%1\"").arg(QLatin1String(mark));
        }
    }
    return {};
}

child_outcome run_extraction(const workplace &place, const scheme &source_scheme, const QStringList &arguments,
                             const misfortune &what)
{
    std::vector<QByteArray> texts;
    for (const QString &argument : arguments_of(place, source_scheme, arguments)) {
        texts.push_back(QFile::encodeName(argument));
    }
    std::vector<char *> words;
    words.reserve(texts.size() + 1);
    for (QByteArray &text : texts) {
        words.push_back(text.data());
    }
    words.push_back(nullptr);

    child_outcome outcome;
    const steady_clock::time_point start = steady_clock::now();
    const pid_t child = ::fork();
    if (child == 0) {
        if (what.prepare) {
            what.prepare();
        }
        become(words, place);
    }
    if (child < 0) {
        throw evidence::evidence_error(QStringLiteral("No process can be made."));
    }
    const int status = wait_for(child, start, what.killed_after, outcome);
    outcome.duration = std::chrono::duration_cast<std::chrono::microseconds>(steady_clock::now() - start);
    outcome.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    outcome.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    QFile output(text_of(place.output()));
    if (output.open(QIODevice::ReadOnly)) {
        outcome.output = output.readAll();
    }
    return outcome;
}

} // namespace trial
