#include "ios/mail_file_finder.h"

#include <QFile>
#include <QFileInfo>

namespace {

// A name that cannot lead anywhere but into a folder of that name.
bool is_plain_name(const QString &name)
{
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..") &&
           !name.contains(QLatin1Char('/')) && !name.contains(QChar(0));
}

} // namespace

mail_file_finder::mail_file_finder(const QString &root, const QString &message_data_folder,
                                   const std::atomic<bool> &cancel_flag)
    : source(root), message_data(message_data_folder), is_message_data_inside(source.contains(message_data)),
      is_cancelled(cancel_flag)
{
}

QString mail_file_finder::find(const QString &global_message_id)
{
    if (!is_message_data_inside) {
        return QString();
    }
    if (global_message_id == last_id && !global_message_id.isEmpty()) {
        return last_path;
    }
    const QString folder = message_data + global_message_id + QLatin1Char('/');
    const QByteArray found =
        is_plain_name(global_message_id) ? find_in_named_folder(folder) : find_in_unusual_folder(folder);
    last_id = global_message_id;
    last_path = found.isEmpty() ? QString() : folder + QFile::decodeName(found);
    return last_path;
}

QByteArray mail_file_finder::find_in_named_folder(const QString &folder)
{
    folder_walk walk(folder, links::refuse);
    const bool may_be_link = !walk.is_open() && QFileInfo(folder.chopped(1)).isSymLink();
    return may_be_link ? find_in_unusual_folder(folder) : last_mail_file(walk);
}

QByteArray mail_file_finder::last_mail_file(folder_walk &walk)
{
    QByteArray found;
    while (walk.next()) {
        if (is_cancelled) {
            has_stopped = true;
            return QByteArray();
        }
        if (walk.relative_path().endsWith(".emlx")) {
            found = walk.relative_path();
        }
    }
    return found;
}

// An empty id means the whole MessageData folder, and a hostile index names folders such as "../../..", a million
// times. Each folder is walked once, and only inside the source.
QByteArray mail_file_finder::find_in_unusual_folder(const QString &folder)
{
    if (!source.contains(folder)) {
        return QByteArray();
    }
    const QString canonical = QFileInfo(folder).canonicalFilePath();
    const auto known = walked.constFind(canonical);
    if (known != walked.constEnd()) {
        return *known;
    }
    folder_walk walk(canonical, links::refuse);
    const QByteArray found = last_mail_file(walk);
    if (!has_stopped) {
        walked.insert(canonical, found);
    }
    return found;
}
