/// The two addresses of a mail file that the mail index lacks. No MIME parser: a scan for lines that begin with two
/// header names, anywhere in the file, after a fixed list of replacements over its text.
#pragma once

#include "services/source_files.h"

#include <QByteArray>
#include <QString>

#include <atomic>

/// Texts of the first blind-copy line and the first reply-to line of a mail file; null where it has no such line.
struct struct_address_bcc_replyto
{
    QString bcc;
    QString reply_to;
};

/// The replacements make a line of each folded address list and undo a few escapes. They are defined over the whole
/// text, but nearly all of a mail is neither header nor address: the scanner looks at the line starts of the file as it
/// is, a block at a time, and replaces only in the lines that it takes. Two facts make that the same to the letter:
///
///   - No replacement gives a character of a header name, and each leaves a character of its own, so a name in the
///     replaced text stands in the file as well; and a "\n" in front of it in the text is one in the file. The
///     reverse fails only behind the folded commas ",\r\n" and ", \r\n" and, as the second becomes the first,
///     behind ", \r\n\r\n".
///   - A character that occurs in none of the eleven texts stands where it stands. The text may be cut in front of it,
///     and the parts replaced one by one.
class emlx_header_scanner
{
public:
    /// Address lines are read about up to here (bytes in the file).
    static constexpr int longest_line = 16 << 20;

    /// In: an open mail file, of which the bytes up to the first zero byte are read, and how many at a time.
    emlx_header_scanner(const file_descriptor &file, const std::atomic<bool> &cancel_flag, int block_size = 1 << 16);

    /// Out: the two texts; null ones when the extraction was cancelled.
    struct_address_bcc_replyto scan();
    /// Whether a line was longer than the longest that is read.
    bool has_cut_line() const { return is_line_cut; }

private:
    bool read_more();
    bool step_to_next_line();
    bool is_at_line_of(const char *const (&names)[2]);
    bool is_line_start() const;
    QByteArray take_line();
    int end_of_part(int begin);

    const file_descriptor &file;
    const std::atomic<bool> &is_cancelled;
    int block_size;
    QByteArray window; // of the text: from a little before the position to what has been read
    int position = 0;  // of the line in hand in the window; 0 only at the start of the text
    bool is_complete = false;
    bool is_line_cut = false;
};

/// Out: the address text of a line, which begins with its header name: the pieces between the commas trimmed, a quoted
/// Base64 word in front of a piece decoded to UTF-8, without double quotes. Empty when the extraction is cancelled.
QByteArray get_to_field(const QByteArray &line, const std::atomic<bool> &cancel_flag);
