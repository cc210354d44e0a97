/// Reads a log of the plug-in back, plain or enciphered, line by line.
#pragma once

#include <QFile>
#include <QSet>
#include <QString>
#include <QStringList>

class log_reader
{
public:
    enum class form
    {
        plain,
        enciphered
    };

    /// In: the file; its form; where the lines wanted begin, in bytes.
    log_reader(const QString &path, form written_as, qint64 from = 0);

    bool open();
    QString error_text() const { return file.errorString(); }

    /// Goes to the next line; false at the end.
    bool next();
    /// The line's number, from 1 on.
    qint64 number() const { return line_number; }
    const QString &line() const { return line_text; }
    /// False for a record that does not decipher; its line is empty.
    bool is_readable() const { return readable; }
    /// Whether a closed record was met, as any enciphered log with lines in it has one.
    bool has_met_records() const { return met_records; }

private:
    bool next_record(QByteArray &record);

    QFile file;
    const form log_form;
    const qint64 begin;
    QByteArray unread; // bytes of the file behind the last record
    qint64 line_number = 0;
    QString line_text;
    bool readable = true;
    bool met_records = false;
};

struct log_failures
{
    qint64 count = 0;
    qint64 told = 0;          ///< of these, how many the lines below stand for
    QStringList first;        ///< the first lines that differ, up to the limit, with their reasons
    QSet<QString> operations; ///< that may lack rows, as "mail_macos::extract_messages"; an empty name is one not known
};

/// The lines that tell a failure, and the records that do not decipher. A log that cannot be opened is one failure, and
/// so is one that does not hold the run's last line.
log_failures failures_in(log_reader &log, int limit);
