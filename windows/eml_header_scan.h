/// Header values of a mail file by plain text search: a header is any line that holds its name, in the body as well,
/// and the last such line wins. No MIME parser.
#pragma once

#include <QByteArray>
#include <QString>

#include <atomic>

/// Values as they stand in the file, line end included; empty where no line gives one.
struct eml_header_values
{
    QString from;
    QString to;
    QString subject; ///< an encoded word is not decoded
    QString importance;
    QString date;
};

/// Out: what follows the last ":"; empty without one.
QString behind_last_colon(const QString &text);

/// Takes the bytes of a file in pieces of any size, in time proportional to them and with one line in memory.
class eml_header_scan
{
public:
    /// Of a longer line the beginning is taken (bytes). No header is: all recipients of a large company are less.
    static constexpr int longest_line = 4 << 20;

    /// A raised flag ends the scan at the next line.
    explicit eml_header_scan(const std::atomic<bool> &cancel_flag) : is_cancelled(cancel_flag) {}

    /// Out: false when the extraction was cancelled.
    bool take(const char *data, int size);
    /// Behind the last piece, which need not end with a line end. Out: false when the extraction was cancelled.
    bool finish();
    eml_header_values values() const;
    /// Whether a line was longer than what is looked through of it.
    bool has_cut_line() const { return is_line_cut; }

private:
    bool take_line(const char *line, int size);

    const std::atomic<bool> &is_cancelled;
    QByteArray begun_line; // up to the end of the pieces so far
    bool is_line_cut = false;
    // The lines that won, up to their first zero byte.
    QByteArray from_line;
    QByteArray to_line;
    QByteArray subject_line;
    QByteArray importance_line;
    QByteArray date_line;
};
