/// The small steps in which the configuration operations turn what a property list stores into the texts of their rows.
/// All are plain functions of their arguments and log nothing. A value that was not found is a null text and stays one.
#pragma once

#include "services/property_list.h"

#include <QString>

#include <atomic>
#include <cstddef>

/// A word as the mail application stores it, and as rows show it.
struct shown_word
{
    const char *stored;
    const char *shown;
};

/// The same for a number.
struct shown_number
{
    qint64 stored;
    const char *shown;
};

/// The rows of a constant table, in their order.
template <typename row>
class table_rows
{
public:
    template <std::size_t size>
    constexpr table_rows(const row (&rows)[size]) // NOLINT(google-explicit-constructor): a table is its rows
        : first(rows), last(rows + size)
    {
    }
    constexpr const row *begin() const { return first; }
    constexpr const row *end() const { return last; }

private:
    const row *first;
    const row *last;
};

// clang-format off

/// What a list of mails is sorted by: in the lists of VIPs and in the state of the viewer.
inline constexpr shown_word sort_order_words[] = {
    {"readstatus",    "Unread"},
    {"size",          "Attachments"},
    {"bytes",         "Size"},
    {"from",          "From"},
    {"to",            "To"},
    {"subject",       "Subject"},
    {"received-date", "Date"},
    {"flags",         "Flags"},
    {"location",      "Mailbox"},
};

// clang-format on

/// In: a row text of the property list readers. Out: what stands behind its first ":+:"; null when it has none.
QString value_of_row_text(const QString &row_text);

// Readers of one key of a dictionary, giving the value alone. Null for a key that is missing or holds a value of
// another kind.

/// The trimmed text.
QString stored_text(const char *key, const property_list_value &dictionary);
/// A number cut towards zero: "NO" for 0, "YES" for 1, empty for any other.
QString stored_yes_no(const char *key, const property_list_value &dictionary);
/// The elements of a list of texts, trimmed, joined by ";". Null as well when the flag is found raised.
QString stored_list(const char *key, const property_list_value &dictionary, const std::atomic<bool> &cancel_flag);

/// Replaces every occurrence of each word, one word after the other: what one puts in, a later one may replace.
QString with_words_shown(QString text, table_rows<shown_word> words);

/// Replaces the word that the value begins with; the first word that fits counts.
QString with_first_word_shown(const QString &value, table_rows<shown_word> words);

/// In: a row text. Out: the same with its value as above.
QString with_value_shown(const QString &row_text, table_rows<shown_word> words);

/// Out: null for a number that the table does not hold.
QString text_of_number(qint64 number, table_rows<shown_number> numbers);

/// Decodes percent escapes; the decoded bytes are read as UTF-8, up to the first zero byte. Any two characters behind a
/// "%" are an escape, digits or not: "100% sure" gives "100sure".
QString with_escapes_decoded(const QString &text);

/// Puts the home folder of the user in place of a "~" that the text begins with.
QString with_home_expanded(const QString &text, const QString &user);

/// Puts round brackets in place of angle brackets, as around the address behind a name.
QString with_round_brackets(QString text);

/// Adds the label, the value and ";". A blank value adds nothing, a label neither.
void append_part(QString &text, const char *label, const QString &value);

/// Cuts the ending, once, where the text has it.
QString without_ending(QString text, const char *ending);

/// What stands between the paths, or the texts, of a list in one column.
inline constexpr const char *list_separator = ";++::++;";

/// Cuts a list separator, once, from each end of the text.
QString without_outer_separators(QString text);

/// Out: whether a stored path, taken from its folder, leads out of that by its "..", whatever stands there.
bool leads_out(const QString &stored_path);

/// In: an instant as seconds since 1970. Out: the whole seconds in decimal; "0" before 1970, which no unsigned number
/// holds, and null for 1970 itself.
QString text_of_instant(double seconds);
