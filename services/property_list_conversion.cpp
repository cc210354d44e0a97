#include "services/property_list_conversion.h"

#include "services/property_list_guard.h"

#include <QStandardPaths>

#include <cstdlib>
#include <memory>

#include <plist/plist.h>

namespace {

// A list of a few bytes can unfold to gigabytes of text, all of which would have to be written.
constexpr quint64 unfolded_size_limit = Q_UINT64_C(16) << 20;
constexpr uint32_t xml_size_limit = 16U << 20;

constexpr int wake_up_interval_ms = 10; // how soon a cancel from another thread is noticed
constexpr int end_timeout_ms = 2000;

struct c_memory
{
    void operator()(void *memory) const { std::free(memory); }
};

struct tree_deleter
{
    void operator()(void *node) const { plist_free(node); }
};

} // namespace

QByteArray property_list_as_xml(const QByteArray &content)
{
    if (content.isEmpty() || !is_safe_property_list(content, unfolded_size_limit)) {
        return QByteArray();
    }
    plist_t parsed = nullptr;
    plist_from_memory(content.constData(), static_cast<uint32_t>(content.size()), &parsed);
    const std::unique_ptr<void, tree_deleter> tree(parsed);
    if (!tree) {
        return QByteArray();
    }
    char *text = nullptr;
    uint32_t length = 0;
    plist_to_xml(tree.get(), &text, &length);
    const std::unique_ptr<char, c_memory> owner(text);
    return text && length <= xml_size_limit ? QByteArray(text, static_cast<int>(length)) : QByteArray();
}

QString property_list_tool::path()
{
    return QStandardPaths::findExecutable(QStringLiteral("plutil"));
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
        process.kill();
        process.waitForFinished(end_timeout_ms);
    }
}

void property_list_tool::turn_event_loop()
{
    events.processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}
