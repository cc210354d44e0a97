/// The tags of an HTML text one after the other, told apart as QTextDocument tells them apart: what it takes for a
/// comment or a quoted value is one here as well. One pass, no tree, nothing copied.
#pragma once

#include <QString>
#include <QStringView>

class html_reader
{
public:
    enum class tag_kind
    {
        opening,
        closing,
        comment ///< and declarations
    };

    /// The text outlives the reader.
    explicit html_reader(const QString &html) : source(html) {}

    /// Steps to the next tag. Out: false behind the last one; the text in hand is then the rest.
    bool next();

    /// What stands between the tag before and the one in hand, as written.
    QStringView text() const { return current_text; }
    tag_kind kind() const { return current_kind; }
    /// As written, in any case; empty for a comment.
    QStringView name() const { return current_name; }
    bool is_named(const char *name) const
    {
        return current_name.compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
    }
    /// Whether the tag has no content: "<br/>", "<br>".
    bool is_empty_element() const;
    int attribute_count() const { return attributes; }
    /// How many columns and rows a table cell takes; of more than 262,144 that many.
    qint64 column_span() const { return columns; }
    qint64 row_span() const { return rows; }
    /// Whether a name is written with character references, as no program that means well does.
    bool is_disguised() const { return has_reference_in_name; }

private:
    bool is_at(char character) const;
    void skip_blanks();
    void skip_comment();
    void read_attributes();
    QStringView read_word();

    QStringView source;
    int position = 0;
    QStringView current_text;
    tag_kind current_kind = tag_kind::comment;
    QStringView current_name;
    bool is_closed_at_once = false;
    bool has_reference_in_name = false;
    int attributes = 0;
    qint64 columns = 1;
    qint64 rows = 1;
};
