#include "host/command_tabs.h"

#include "host/command_line.h"
#include "host/scheme_table.h"
#include "host/terminal.h"

#include <algorithm>

int command_tabs(const QStringList &arguments)
{
    const command_arguments checked{QStringLiteral("tabs"), arguments, {}, {}, 0};
    int name_width = 0;
    for (const scheme_entry *scheme : all_schemes()) {
        for (const QString &name : tab_names(*scheme)) {
            name_width = std::max(name_width, name.size());
        }
    }
    bool is_first = true;
    for (const scheme_entry *scheme : all_schemes()) {
        if (!is_first) {
            print_line();
        }
        is_first = false;
        print_line(QStringLiteral("%1: %2").arg(QLatin1String(scheme->internal_name), QLatin1String(scheme->source)));
        for (const tab_entry *tab : tabs_of(*scheme)) {
            print_line(QStringLiteral("  %1  %2")
                           .arg(QString::fromLatin1(tab->name).leftJustified(name_width), QLatin1String(tab->holds)));
        }
    }
    return exit_done;
}
