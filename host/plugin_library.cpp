#include "host/plugin_library.h"

#include "host/command_line.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLibrary>

QString default_plugin_file()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/libmail.so");
}

std::unique_ptr<mail> load_plugin(const QString &file)
{
    // A bare name would be looked up on the system's library path.
    const QFileInfo given(file);
    if (!given.isFile()) {
        throw unusable_input{
            QStringLiteral("there is no plug-in \"%1\": give its library with --plugin FILE").arg(file)};
    }
    QLibrary library(given.absoluteFilePath());
    if (!library.load()) {
        throw unusable_input{
            QStringLiteral("the plug-in \"%1\" does not load: give its library with --plugin FILE (%2)")
                .arg(file, library.errorString().simplified())};
    }
    const auto create_object = reinterpret_cast<mail *(*)()>(library.resolve("create_object"));
    if (create_object == nullptr) {
        throw unusable_input{QStringLiteral("\"%1\" is no plug-in, for it has no create_object: give the library with "
                                            "--plugin FILE")
                                 .arg(file)};
    }
    return std::unique_ptr<mail>(create_object());
}
