/// The schemes of evidence sources and the tabs of each: what a host must know to ask the plug-in for anything.
#pragma once

#include <QString>
#include <QStringList>

#include <vector>

struct scheme_entry
{
    const char *internal_name; ///< decides the extractor
    const char *display_name;  ///< stored in the column os_scheme_display of every row
    const char *source;        ///< what a source of this scheme is
    bool has_home_folders;     ///< whether its data lie in home folders below "Users"
};

/// How often the plug-in reports a tab as finished.
enum class tab_report
{
    never,
    once,
    varies ///< from not at all to twice, as the source has them
};

struct tab_entry
{
    const char *scheme;
    const char *name; ///< the tab's and its result table's
    const char *holds;
    tab_report reported;
};

/// All schemes, in the plug-in's order.
std::vector<const scheme_entry *> all_schemes();

/// The scheme of that internal name, matched exactly; nullptr where there is none.
const scheme_entry *find_scheme(const QString &internal_name);

/// The scheme's tabs in the order of the plug-in's work.
std::vector<const tab_entry *> tabs_of(const scheme_entry &scheme);

/// Names of entries, for sentences and lists.
QStringList scheme_names();
QStringList tab_names(const scheme_entry &scheme);
