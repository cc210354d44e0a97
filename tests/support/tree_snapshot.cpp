#include "tests/support/tree_snapshot.h"

#include <QDirIterator>
#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

QStringList paths_below(const QString &folder)
{
    QStringList paths{folder};
    QDirIterator entries(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        paths.append(entries.next());
    }
    paths.sort();
    return paths;
}

QString state_of(const QString &path)
{
    struct stat status = {};
    if (::lstat(QFile::encodeName(path).constData(), &status) != 0) {
        return path + QLatin1String(" is gone");
    }
    if (S_ISLNK(status.st_mode)) {
        status.st_atim = {}; // a link cannot be followed without moving its access time
    }
    return path + QStringLiteral(" mode %1 size %2 modified %3.%4 changed %5.%6 read %7.%8")
                      .arg(status.st_mode, 0, 8)
                      .arg(status.st_size)
                      .arg(status.st_mtim.tv_sec)
                      .arg(status.st_mtim.tv_nsec)
                      .arg(status.st_ctim.tv_sec)
                      .arg(status.st_ctim.tv_nsec)
                      .arg(status.st_atim.tv_sec)
                      .arg(status.st_atim.tv_nsec);
}

} // namespace

tree_snapshot::tree_snapshot(const QString &path) : folder(path)
{
    const QStringList paths = paths_below(folder);
    for (const QString &entry : paths) {
        const timespec times[2] = {{1000000000, 0}, {0, UTIME_OMIT}};
        ::utimensat(AT_FDCWD, QFile::encodeName(entry).constData(), times, AT_SYMLINK_NOFOLLOW);
    }
    for (const QString &entry : paths) {
        state.append(state_of(entry));
    }
}

QString tree_snapshot::changes() const
{
    QString report;
    for (const QString &before : state) {
        const QString now = state_of(before.left(before.indexOf(QLatin1String(" mode "))));
        if (now != before) {
            report += QLatin1String("- ") + before + QLatin1String("\n+ ") + now + QLatin1Char('\n');
        }
    }
    if (paths_below(folder).size() != state.size()) { // listed last: listing moves the access times of folders
        report += QLatin1String("entries were added\n");
    }
    return report;
}
