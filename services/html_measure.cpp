#include "services/html_measure.h"

#include "services/html_reader.h"

#include <QList>

#include <algorithm>
#include <vector>

namespace {

struct bound
{
    const char *name;
    qint64 html_measure::*number;
    qint64 limit;
};

constexpr qint64 largest_depth_sum = 20000000;
// Each is set where the library takes about a second for what it bounds; style sheets get more, since they stand in
// every newsletter and most of their rules match nothing.
// clang-format off
constexpr bound bounds[] = {
    {"characters",      &html_measure::characters,       8 << 20},
    {"tags",            &html_measure::tags,             100000},
    {"attributes",      &html_measure::attributes,       400000},
    {"line breaks",     &html_measure::line_breaks,      200000},
    {"list items",      &html_measure::list_items,       4000},
    {"depth",           &html_measure::depth_sum,        largest_depth_sum},
    {"cells of tables", &html_measure::grid_cells,       200000},
    {"spanned cells",   &html_measure::spanned_cells,    200000},
    {"style sheets",    &html_measure::style_characters, 4000000},
};
// clang-format on
constexpr qint64 most_style_matches = 20000000;
constexpr qint64 most_nested_style_matches = 100000000; // each looks from one element to the one around it

struct open_element
{
    QStringView name;
    qint64 rows = 0;             // of a table
    qint64 columns = 0;          // of a row; of the widest row of a table
    qint64 spanning_columns = 0; // of a table: those of cells that reach into rows below
};

class measurer
{
public:
    explicit measurer(const QString &html) : reader(html) { sums.characters = html.size(); }

    html_measure run();

private:
    void count_tag();
    void open();
    void open_row();
    void open_cell();
    void close();
    void close_from(std::size_t index);
    std::size_t innermost(std::initializer_list<const char *> names) const;
    void take_text();
    void count_style_sheet();

    html_reader reader;
    html_measure sums;
    std::vector<open_element> elements;
    qint64 closed_by_others = 0; // for all that is known the library holds them open
    bool is_in_style = false;
    html_measure style; // of the style element in hand
};

bool is_named(QStringView name, const char *wanted)
{
    return name.compare(QLatin1String(wanted), Qt::CaseInsensitive) == 0;
}

bool is_line_break(QChar character)
{
    return character == QLatin1Char('\n') || character == QChar(QChar::ParagraphSeparator) ||
           character == QChar(QChar::LineSeparator);
}

// Selectors stand in front of a brace, with commas between them; blanks and signs in one ask for other elements.
void count_selectors(QStringView list, html_measure &sums)
{
    for (const QStringView selector : list.split(QLatin1Char(','))) {
        const QStringView trimmed = selector.trimmed();
        ++sums.selectors;
        if (std::any_of(trimmed.begin(), trimmed.end(), [](QChar character) {
                return character.isSpace() || character == QLatin1Char('>') || character == QLatin1Char('+');
            })) {
            ++sums.nested_selectors;
        }
    }
}

} // namespace

html_measure measurer::run()
{
    while (sums.depth_sum <= largest_depth_sum && reader.next()) {
        take_text();
        switch (reader.kind()) {
        case html_reader::tag_kind::comment:
            break;
        case html_reader::tag_kind::opening:
            count_tag();
            open();
            break;
        case html_reader::tag_kind::closing:
            count_tag();
            close();
            break;
        }
    }
    take_text();
    close_from(0);
    return sums;
}

void measurer::count_tag()
{
    const qint64 depth = static_cast<qint64>(elements.size()) + closed_by_others;
    ++sums.tags;
    sums.depth_sum += depth;
    sums.depth_square_sum += depth * depth;
    sums.attributes += reader.attribute_count();
    sums.is_disguised = sums.is_disguised || reader.is_disguised();
}

// Out: the index of the innermost open element of these names; the number of elements when there is none.
std::size_t measurer::innermost(std::initializer_list<const char *> names) const
{
    for (std::size_t index = elements.size(); index > 0; --index) {
        const QStringView name = elements[index - 1].name;
        if (std::any_of(names.begin(), names.end(), [name](const char *wanted) { return is_named(name, wanted); })) {
            return index - 1;
        }
    }
    return elements.size();
}

void measurer::open()
{
    is_in_style = reader.is_named("style");
    style = html_measure();
    style.selectors = 1; // a sheet without rules costs a look as well
    if (reader.is_named("li")) {
        ++sums.list_items;
    } else if (reader.is_named("tr")) {
        open_row();
    } else if (reader.is_named("td") || reader.is_named("th")) {
        open_cell();
    }
    if (!reader.is_empty_element()) {
        elements.push_back({reader.name()});
    }
}

// A row stands in a table and a cell in a row: the library closes what is open in between, and makes up what is
// missing.
void measurer::open_row()
{
    const std::size_t around = innermost({"table", "tbody", "thead", "tfoot"});
    if (around == elements.size()) {
        elements.push_back({QStringView(u"table")});
    } else {
        close_from(around + 1);
    }
    ++elements[innermost({"table", "tbody", "thead", "tfoot"})].rows;
}

void measurer::open_cell()
{
    const std::size_t row = innermost({"tr"});
    if (row == elements.size()) {
        open_row();
        elements.push_back({QStringView(u"tr")});
    } else {
        close_from(row + 1);
    }
    elements.back().columns += reader.column_span();
    const std::size_t table = innermost({"table", "tbody", "thead", "tfoot"});
    if (table < elements.size()) {
        elements[table].columns = std::max(elements[table].columns, elements.back().columns);
        if (reader.row_span() > 1) {
            elements[table].spanning_columns += reader.column_span();
        }
    }
    if (reader.column_span() > 1 || reader.row_span() > 1) {
        sums.spanned_cells += reader.column_span() * reader.row_span();
    }
}

void measurer::close()
{
    if (is_in_style) {
        count_style_sheet();
    }
    const QStringView name = reader.name();
    std::size_t index = elements.size();
    while (index > 0 && elements[index - 1].name.compare(name, Qt::CaseInsensitive) != 0) {
        --index;
    }
    if (index > 0) { // one that closes nothing is passed over
        close_from(index);
        close_from(index - 1);
        --closed_by_others;
        is_in_style = false;
    }
}

// Closes the elements from an index on.
void measurer::close_from(std::size_t index)
{
    for (std::size_t at = index; at < elements.size(); ++at) {
        const open_element &closed = elements[at];
        sums.grid_cells += closed.rows * (closed.columns + closed.spanning_columns);
    }
    closed_by_others += static_cast<qint64>(elements.size() - index);
    elements.resize(index);
}

void measurer::take_text()
{
    const QStringView text = reader.text();
    sums.line_breaks += std::count_if(text.begin(), text.end(), is_line_break);
    if (!is_in_style) {
        return;
    }
    style.style_characters += text.size();
    sums.is_disguised = sums.is_disguised || text.contains(QLatin1String("&#"));
    int begin = 0;
    for (int at = 0; at < static_cast<int>(text.size()); ++at) {
        if (text.at(at) == QLatin1Char('{')) {
            count_selectors(text.mid(begin, at - begin), style);
        }
        if (text.at(at) == QLatin1Char('{') || text.at(at) == QLatin1Char('}')) {
            begin = at + 1;
        }
    }
}

// Whatever tag closes, the library reads the sheet in front of it, and once more before the next one.
void measurer::count_style_sheet()
{
    sums.selectors += style.selectors;
    sums.nested_selectors += style.nested_selectors;
    sums.style_characters += style.style_characters;
}

html_measure measure_html(const QString &html)
{
    return measurer(html).run();
}

const char *excess_of(const QString &html)
{
    const html_measure measured = measure_html(html);
    for (const bound &tested : bounds) {
        if (measured.*tested.number > tested.limit) {
            return tested.name;
        }
    }
    if (measured.selectors * measured.depth_sum > most_style_matches ||
        measured.nested_selectors * measured.depth_square_sum / 2 > most_nested_style_matches) {
        return "style rules";
    }
    return measured.is_disguised ? "disguised names" : nullptr;
}
