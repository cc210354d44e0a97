#include "host/unreadable_files.h"

#include "core/unreadable_sources.h"

namespace {

QStringList &list()
{
    static QStringList files;
    return files;
}

} // namespace

void listen_for_unreadable_files()
{
    list().clear();
    tell_unreadable_sources_to(
        [](const QString &path, const QString &error) { list() += QStringLiteral("%1: %2").arg(path, error); });
}

const QStringList &unreadable_files()
{
    return list();
}
