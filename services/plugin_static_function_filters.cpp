// Suffixes, sizes, and the filters that take a value out of its printed description.
#include "core/plugin_static_function.h"
#include "services/source_files.h"

#include <QFile>
#include <QFileInfo>
#include <QStringList>

namespace {

constexpr int shortest_date = 9; // characters: what is shorter is a date before March 1973, or none at all

// The part at the index, of a text split at the separator; empty when there are too few parts.
QString part_of(const QString &text, const QString &separator, int index)
{
    const QStringList parts = text.split(separator);
    return index < parts.size() ? parts.at(index) : QString();
}

// <CFBoolean 0x… [0x…]>{value = true} gives " true".
QString braced_value_of(const QString &description)
{
    QString value = part_of(part_of(description, QStringLiteral("]>{"), 1), QStringLiteral("="), 1);
    value.chop(1); // the closing brace
    return value;
}

} // namespace

QString plugin_static_function::mining_suffix(const QString &path)
{
    if (path.trimmed().isEmpty()) {
        return QString();
    }
    QString name = QFileInfo(path).fileName();
    if (name.startsWith(QLatin1Char('.'))) {
        name.remove(0, 1);
    }
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? QString() : name.mid(dot + 1);
}

QString plugin_static_function::mining_size(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists()) {
        return QString();
    }
    if (!info.isDir()) {
        return QString::number(info.size());
    }
    qint64 sum = 0;
    folder_walk entries(path, links::follow, companion_files::meet);
    while (entries.next()) {
        if (bool_cancel_extraction) {
            return QString::number(info.size());
        }
        if (entries.kind() == folder_walk::entry_kind::file) {
            const QString entry = path + QLatin1Char('/') + QFile::decodeName(entries.relative_path());
            sum += status_of(entry).regular_size.value_or(0);
        }
    }
    return QString::number(sum);
}

QString plugin_static_function::get_filtered_number_value(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char(','));
    return parts.size() < 2 ? QString() : part_of(parts.at(0), QStringLiteral("+"), 1).trimmed();
}

QString plugin_static_function::get_filtered_boolean_value(const QString &text)
{
    return braced_value_of(text).trimmed();
}

QString plugin_static_function::get_filtered_cfstring_value(const QString &text)
{
    return braced_value_of(text).remove(QLatin1Char('"')).trimmed();
}

QString plugin_static_function::get_filtered_string_value(const QString &text)
{
    if (text.trimmed().isEmpty()) {
        return QString();
    }
    QString value;
    const QStringList parts = text.split(QLatin1Char(','));
    for (QString part : parts) {
        if (bool_cancel_extraction) {
            return QString();
        }
        part.remove(QLatin1Char('(')).remove(QLatin1Char(')')).remove(QLatin1Char('"'));
        value += part.trimmed() + QLatin1Char(';');
    }
    value.chop(1); // the last ";"
    return value;
}

QString plugin_static_function::get_filtered_wherefrom_value(const QString &text)
{
    if (text.trimmed().isEmpty()) {
        return QString();
    }
    QString value = text;
    value.remove(QLatin1Char('\n'));
    value.remove(QLatin1String("  "));
    value.remove(QLatin1String("(\""));
    value.remove(QLatin1String("\")"));
    value.replace(QLatin1String("\","), QLatin1String(";"));
    value.replace(QLatin1Char(','), QLatin1Char('\n'));
    value.replace(QLatin1Char('<'), QLatin1Char('('));
    value.replace(QLatin1Char('>'), QLatin1Char(')'));
    value.remove(QLatin1Char('"'));
    value.replace(QLatin1String("\\U2019s"), QLatin1String("'s"));
    return QString::fromLocal8Bit(QByteArray::fromPercentEncoding(value.toLocal8Bit())).trimmed();
}

QString plugin_static_function::get_filtered_date_value(const QString &text)
{
    if (text.trimmed().isEmpty()) {
        return QString();
    }
    QDateTime as_read = get_datetime_from_string_with_iso_date(text);
    as_read.setTimeSpec(Qt::UTC);
    const QString seconds = QString::number(as_read.toMSecsSinceEpoch() / 1000);
    return seconds.size() < shortest_date ? QString() : seconds;
}
