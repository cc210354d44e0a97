#include "macos/row_text.h"

#include "core/plugin_static_function.h"
#include "services/property_list_readers.h"

namespace {

const QLatin1String value_marker(":+:");

// Takes a time that grows with the text alone: QString::replace moves the rest of it every thousand words.
QString with_word_shown(const QString &text, QLatin1String stored, QLatin1String shown)
{
    int at = text.indexOf(stored);
    if (at < 0) {
        return text;
    }
    QString result;
    int done = 0;
    for (; at >= 0; at = text.indexOf(stored, done)) {
        result.append(text.midRef(done, at - done)).append(shown);
        done = at + stored.size();
    }
    return result.append(text.midRef(done));
}

} // namespace

QString value_of_row_text(const QString &row_text)
{
    const int marker = row_text.indexOf(value_marker);
    return marker < 0 ? QString() : row_text.mid(marker + value_marker.size());
}

QString stored_text(const char *key, const property_list_value &dictionary)
{
    return dictionary.object_for_key(key).text().trimmed();
}

QString stored_yes_no(const char *key, const property_list_value &dictionary)
{
    return value_of_row_text(
        plugin_static_function::get_nsnumber_key_and_value_yes_no(QString::fromUtf8(key), dictionary, QString()));
}

QString stored_list(const char *key, const property_list_value &dictionary, const std::atomic<bool> &cancel_flag)
{
    return value_of_row_text(labelled_texts_of_array(dictionary.object_for_key(key), QString(), cancel_flag));
}

QString with_words_shown(QString text, table_rows<shown_word> words)
{
    for (const shown_word &word : words) {
        text = with_word_shown(text, QLatin1String(word.stored), QLatin1String(word.shown));
    }
    return text;
}

QString with_first_word_shown(const QString &value, table_rows<shown_word> words)
{
    for (const shown_word &word : words) {
        const QLatin1String stored(word.stored);
        if (value.startsWith(stored)) {
            return QLatin1String(word.shown) + value.midRef(stored.size());
        }
    }
    return value;
}

QString with_value_shown(const QString &row_text, table_rows<shown_word> words)
{
    const int marker = row_text.indexOf(value_marker);
    if (marker < 0) {
        return row_text;
    }
    const int value_begin = marker + value_marker.size();
    return row_text.leftRef(value_begin) + with_first_word_shown(row_text.mid(value_begin), words);
}

QString text_of_number(qint64 number, table_rows<shown_number> numbers)
{
    for (const shown_number &entry : numbers) {
        if (entry.stored == number) {
            return QString::fromLatin1(entry.shown);
        }
    }
    return QString();
}

QString with_escapes_decoded(const QString &text)
{
    if (text.isNull()) {
        return text;
    }
    return QString::fromUtf8(QByteArray::fromPercentEncoding(text.toLocal8Bit()).constData());
}

QString with_home_expanded(const QString &text, const QString &user)
{
    return text.startsWith(QLatin1Char('~')) ? QLatin1String("/Users/") + user + text.midRef(1) : text;
}

QString with_round_brackets(QString text)
{
    return text.replace(QLatin1Char('>'), QLatin1Char(')')).replace(QLatin1Char('<'), QLatin1Char('('));
}

void append_part(QString &text, const char *label, const QString &value)
{
    if (!value.trimmed().isEmpty()) {
        text += QLatin1String(label) + value + QLatin1Char(';');
    }
}

QString without_ending(QString text, const char *ending)
{
    const QLatin1String cut(ending);
    if (text.endsWith(cut)) {
        text.chop(cut.size());
    }
    return text;
}

QString without_outer_separators(QString text)
{
    const QLatin1String separator(list_separator);
    if (text.startsWith(separator)) {
        text.remove(0, separator.size());
    }
    return without_ending(text, list_separator);
}

bool leads_out(const QString &stored_path)
{
    int depth = 0;
    for (const QStringRef &part : stored_path.splitRef(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        if (part == QLatin1String("..")) {
            --depth;
        } else if (part != QLatin1String(".")) {
            ++depth;
        }
        if (depth < 0) {
            return true;
        }
    }
    return false;
}

QString text_of_instant(double seconds)
{
    if (seconds == 0.0) {
        return QString();
    }
    const QString text = QString::asprintf("%f", seconds);
    return QString::number(text.left(text.indexOf(QLatin1Char('.'))).trimmed().toULongLong());
}
