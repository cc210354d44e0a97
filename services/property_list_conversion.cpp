#include "services/property_list_conversion.h"

#include "services/property_list.h"
#include "services/source_files.h"

#include <QDir>
#include <QStandardPaths>

#include <algorithm>

#include <csignal>
#include <unistd.h>

namespace {

// A list of a few bytes can unfold to gigabytes of text, all of which would have to be written.
constexpr quint64 xml_size_limit = Q_UINT64_C(16) << 20;
constexpr quint64 xml_size_of_small_list = Q_UINT64_C(1) << 20;
constexpr quint64 xml_bytes_per_byte = 16;

constexpr int wake_up_interval_ms = 10; // how soon a cancel from another thread is noticed
constexpr int end_timeout_ms = 2000;

} // namespace

QByteArray property_list_as_xml(const QByteArray &content)
{
    const quint64 limit =
        std::min(xml_size_limit, xml_size_of_small_list + xml_bytes_per_byte * static_cast<quint64>(content.size()));
    return property_list::from_bytes(content, limit).as_xml(limit);
}

void property_list_tool::process_of_own_group::setupChildProcess()
{
    ::setpgid(0, 0);
}

QString property_list_tool::path(const QString &source_root)
{
    const source_boundary source(source_root);
    for (const QString &folder : qEnvironmentVariable("PATH").split(QLatin1Char(':'))) {
        const QString found = QDir::isAbsolutePath(folder)
                                  ? QStandardPaths::findExecutable(QStringLiteral("plutil"), {folder})
                                  : QString();
        if (!found.isEmpty() && !source.contains(found)) {
            return found;
        }
    }
    return QString();
}

property_list_tool::property_list_tool(const QString &program, const QString &list_path, const QString &xml_path,
                                       const std::function<void(int)> &finished)
{
    QObject::connect(&process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), &process,
                     [finished](int exit_code) { finished(exit_code); });
    QObject::connect(&process, &QProcess::errorOccurred, &process, [finished](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            finished(-1);
        }
    });
    process.setStandardOutputFile(QProcess::nullDevice()); // what it prints is read by nobody
    process.setStandardErrorFile(QProcess::nullDevice());
    wake_up.start(wake_up_interval_ms);
    process.start(program,
                  {QStringLiteral("-convert"), QStringLiteral("xml1"), list_path, QStringLiteral("-o"), xml_path},
                  QIODevice::ReadWrite);
}

property_list_tool::~property_list_tool()
{
    if (process.state() != QProcess::NotRunning) {
        process.disconnect();
        const auto id = static_cast<pid_t>(process.processId());
        if (id > 0) {
            ::kill(-id, SIGKILL); // with what it has started
        }
        process.kill();
        process.waitForFinished(end_timeout_ms);
    }
}

void property_list_tool::turn_event_loop()
{
    events.processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}
