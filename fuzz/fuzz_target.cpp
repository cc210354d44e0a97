// The frame around each target: what a host has set up when it calls the plug-in.
#include "fuzz/fuzz_target.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>

#include <clocale>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

void drop_message(QtMsgType, const QMessageLogContext &, const QString &) {}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argument_count, char ***arguments);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

// Qt's own objects live as long as the process, which the fuzzer ends without a return from main.
extern "C" int LLVMFuzzerInitialize(int *argument_count, char ***arguments)
{
    qputenv("QT_QPA_PLATFORM", "minimal");
    qputenv("LC_ALL", "C.UTF-8");
    qputenv("TZ", "America/St_Johns"); // half an hour off, with summer time
    std::setlocale(LC_ALL, "C.UTF-8");
    qInstallMessageHandler(drop_message);
    static QGuiApplication application(*argument_count, *arguments);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz_one(QByteArray(reinterpret_cast<const char *>(data), static_cast<int>(size)));
    return 0;
}

void require(bool holds, const char *statement)
{
    if (!holds) {
        std::fprintf(stderr, "Does not hold: %s\n", statement);
        std::abort();
    }
}

QString file_with(const QByteArray &content, const char *name)
{
    const QString path = QDir::temp().filePath(QString::fromLatin1(name)); // scripts/fuzz gives each process its own
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) && file.write(content) == content.size(), "the input is written");
    return path;
}
