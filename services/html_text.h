/// The plain text of an HTML document of unknown origin.
#pragma once

#include <QString>

struct html_text
{
    QString text;
    const char *excess = nullptr; ///< what of the document went beyond its bound; null: the text is QTextDocument's
};

/// Out: what QTextDocument makes of the document. It loads nothing that the document names: no style sheet, no image.
/// One that would keep it busy without end or take the memory is only freed of its markup, in one pass.
html_text plain_text_of_html(const QString &html);

/// Out: the text between the tags, a line for each block, blanks run together; without scripts and style sheets.
QString text_without_markup(const QString &html);
