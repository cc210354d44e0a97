#include "host/log_reader.h"

#include "services/encryptor_string.h"

#include <QRegularExpression>
#include <QVector>

namespace {

const QByteArray separator = QByteArrayLiteral("<[{()}]>");
constexpr qint64 chunk_size = 1 << 16;

// Longer than any line, and a bound on what a file that is no log makes us hold.
constexpr int longest_record = 1 << 26;

} // namespace

log_reader::log_reader(const QString &path, form written_as, qint64 from)
    : file(path), log_form(written_as), begin(from)
{
}

bool log_reader::open()
{
    return file.open(QIODevice::ReadOnly) && file.seek(begin);
}

bool log_reader::next_record(QByteArray &record)
{
    int searched = 0;
    for (;;) {
        const int end = unread.indexOf(separator, searched);
        if (end >= 0) {
            record = unread.left(end);
            unread.remove(0, end + separator.size());
            met_records = true;
            return true;
        }
        searched = std::max(0, unread.size() - separator.size() + 1);
        const QByteArray chunk = unread.size() < longest_record ? file.read(chunk_size) : QByteArray();
        if (chunk.isEmpty()) {
            record = unread; // what a log that was cut off ends with
            unread.clear();
            return !record.isEmpty();
        }
        unread += chunk;
    }
}

bool log_reader::next()
{
    QByteArray bytes;
    if (log_form == form::plain) {
        bytes = file.readLine();
        if (bytes.isEmpty()) {
            return false;
        }
        if (bytes.endsWith('\n')) {
            bytes.chop(1);
        }
        line_text = QString::fromLocal8Bit(bytes);
    } else {
        if (!next_record(bytes)) {
            return false;
        }
        line_text = encryptor_string().decryptToString(QString::fromLatin1(bytes));
        readable = !line_text.isEmpty(); // no empty line is ever enciphered
    }
    ++line_number;
    return true;
}

namespace {

// Out: the operation that wrote the line; empty for a line that is none of the log's.
QString operation_of(const QString &line)
{
    static const QRegularExpression operation(QStringLiteral("\\[(\\w+::\\w+)\\]:--"));
    return operation.match(line).captured(1);
}

// Out: whether the line was written by one that reads for others: what opens files, and the tables of a store.
bool is_of_reader(const QString &line)
{
    return line.contains(QLatin1String("[source_files::read]:--")) ||
           line.contains(QLatin1String("[specific_table::record_type_case]:--"));
}

// Goes through the lines in their order. What could not be read for an operation concerns that which wrote the line in
// front of it, or the one behind it.
class failure_collector
{
public:
    explicit failure_collector(int shown_limit) : limit(shown_limit) {}

    void meet(const QString &line)
    {
        static const QRegularExpression failure_mark(QStringLiteral("-+\\s*FAILED\\s*-+"));
        const bool is_for_others = is_of_reader(line);
        const bool is_failure = line.contains(QLatin1String("FAILED")) && line.contains(failure_mark);
        if (!is_for_others) {
            previous_line = line;
        }
        if (is_failure || (is_next_concerned && !is_for_others)) {
            failures.operations.insert(operation_of(previous_line));
            is_next_concerned = is_for_others;
        }
        static const QRegularExpression reason(QStringLiteral("\\]:--\\s*(error\\s*:-.*)$"),
                                               QRegularExpression::CaseInsensitiveOption);
        if (is_failure) {
            tell_pending();
            pending = line;
        } else if (!pending.isEmpty()) {
            const QRegularExpressionMatch match = reason.match(line);
            if (match.hasMatch()) {
                pending += QLatin1Char(' ') + match.captured(1);
            }
            tell_pending();
        }
    }
    /// A failure of which no operation is known.
    void add(const QString &sentence)
    {
        failures.operations.insert(QString());
        tell_pending();
        show(sentence);
    }
    log_failures result()
    {
        tell_pending();
        for (int i = 0; i < failures.first.size(); ++i) {
            failures.told += times.at(i);
            if (times.at(i) > 1) {
                failures.first[i] += QStringLiteral(" (%1 times)").arg(times.at(i));
            }
        }
        return failures;
    }

private:
    void show(const QString &line)
    {
        ++failures.count;
        static const QRegularExpression time(QStringLiteral("^\\[[^\\]]*\\]"));
        const QString text = QString(line).remove(time);
        const int known = texts.indexOf(text);
        if (known >= 0) {
            ++times[known];
        } else if (texts.size() < limit) {
            texts += text;
            times += 1;
            failures.first += line;
        }
    }
    void tell_pending()
    {
        if (!pending.isEmpty()) {
            show(pending);
            pending.clear();
        }
    }

    const int limit;
    log_failures failures;
    QStringList texts; // of the lines shown, without their times
    QVector<qint64> times;
    QString pending;       // a failure whose reason may follow
    QString previous_line; // of an operation
    bool is_next_concerned = false;
};

} // namespace

log_failures failures_in(log_reader &log, int limit)
{
    const QLatin1String last_line_of_run("[mail::pub_extract_artifacts]:-- END");
    failure_collector failures(limit);
    if (!log.open()) {
        failures.add(QStringLiteral("the log cannot be read: %1").arg(log.error_text()));
    }
    bool has_end = false;
    while (log.next()) {
        has_end = log.is_readable() && log.line().endsWith(last_line_of_run);
        if (log.is_readable()) {
            failures.meet(log.line());
        } else {
            failures.add(QStringLiteral("record %1 of the log does not decipher").arg(log.number()));
        }
    }
    if (!has_end) { // as on a full disk, where the lines that tell of it are lost
        failures.add(
            QStringLiteral("the log breaks off before the end of the run: what failed after that is not known"));
    }
    return failures.result();
}
