/// How much work a document would be for QTextDocument, whose time grows with the square or the cube of some of these
/// numbers: a few kilobytes can keep it busy for hours.
#pragma once

#include <QString>

struct html_measure
{
    qint64 characters = 0;
    qint64 tags = 0;
    qint64 attributes = 0;
    qint64 line_breaks = 0;
    qint64 list_items = 0;
    qint64 depth_sum = 0;        ///< over the tags: how many elements each stands in
    qint64 depth_square_sum = 0; ///< the same, each squared
    qint64 grid_cells = 0;       ///< rows times columns of all tables, which are filled up to rectangles
    qint64 spanned_cells = 0;    ///< rows times columns of the cells that take more than one
    qint64 selectors = 0;        ///< of style sheets
    qint64 nested_selectors = 0; ///< those that ask for the elements around
    qint64 style_characters = 0; ///< of style sheets, each time that they are parsed
    bool is_disguised = false;   ///< names that cannot be told without resolving references
};

/// Out: the numbers, none of them too low. Takes time in proportion to the text: a document whose depth is beyond all
/// bounds is measured up to there only.
html_measure measure_html(const QString &html);

/// Out: which of the numbers is beyond what QTextDocument masters within seconds and 200 MiB; null when none is.
/// No document that people write comes near: the bounds are those of a mail of a thousand pages.
const char *excess_of(const QString &html);
