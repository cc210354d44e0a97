// Values of the table messages. Fills no table itself.
#include "macos/message_values.h"

namespace {

const QLatin1String separator(";++::++;");

QString joined(const QString &index, const QString &mail_file)
{
    QString text = index + separator + mail_file;
    if (text.startsWith(separator)) {
        text.remove(0, separator.size());
    }
    if (text.endsWith(separator)) {
        text.chop(separator.size());
    }
    return text;
}

} // namespace

message_sender message_sender_of(const QString &text)
{
    if (text.trimmed().isEmpty()) {
        return message_sender();
    }
    const QStringList parts = text.split(QLatin1String("; : ;"));
    return {parts.first().trimmed(), parts.value(1).trimmed()};
}

QString whole_seconds(const QString &date)
{
    // A text that is no number converts to 0.
    return QString::number(date.left(date.indexOf(QLatin1Char('.'))).trimmed().toULongLong());
}

QString message_text_of(QString snippet)
{
    return snippet.remove(QLatin1Char('"')).trimmed();
}

artifact_source_file joined_source_files(const artifact_source_file &index, const artifact_source_file &mail_file)
{
    return {joined(index.source_file, mail_file.source_file),
            joined(index.artifacts_relation_source_file, mail_file.artifacts_relation_source_file)};
}
