/// Evidence of the mail configuration: property lists in the folders MailData of the stores of "anna" and "ben", and
/// runs over them.
#pragma once

#include "tests/macos/macos_run.h"

/// A dictionary of texts written as "Key=value | Key=value".
inline evidence::property_list_dictionary dictionary_of(const QString &line)
{
    evidence::property_list_dictionary dictionary;
    for (const QString &entry : line.split(QStringLiteral(" | "))) {
        const int equals = entry.indexOf(QLatin1Char('='));
        dictionary.append({entry.left(equals), entry.mid(equals + 1)});
    }
    return dictionary;
}

/// The cases of a file of the folder "expected", a line a case: what is stored, " =>", a blank and what is shown.
/// Lines that begin with "#" are remarks.
inline QVector<QPair<QString, QString>> cases_of(const char *expected_file)
{
    QVector<QPair<QString, QString>> cases;
    for (const QString &line : expected_text(expected_file).split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const int arrow = line.indexOf(QLatin1String(" =>"));
        if (!line.startsWith(QLatin1Char('#'))) {
            cases.append({line.left(arrow), line.mid(arrow + 4)});
        }
    }
    return cases;
}

class configuration_source : public macos_source
{
public:
    /// In: the tab, which is the table too, and the name of its list.
    configuration_source(const char *table, const char *list_name) : table(text(table)), list_name(text(list_name)) {}

    QString list_path(const char *user, int generation) const
    {
        return tree.store_folder(text(user), generation) + QLatin1String("/MailData/") + list_name;
    }
    void write(const char *user, int generation, const QVariant &root,
               evidence::property_list_form form = evidence::property_list_form::binary) const
    {
        write_list(list_path(user, generation), root, form);
    }

    std::unique_ptr<host_run> new_run() const { return ::new_run(tree, {table}, texts({"anna", "ben"})); }
    std::unique_ptr<host_run> run() const { return whole_run(tree, {table}, texts({"anna", "ben"})); }
    /// The values of a column in the order of the rows; those that are NULL are left out.
    QStringList column(const host_run &run, const char *name) const
    {
        return values_of(run, text("select %1 from %2 where %1 is not null order by INT").arg(text(name), table));
    }
    void compare_rows_with(const char *expected_file, const host_run &run) const
    {
        compare_with(expected_file, settled_rows(run, table));
    }

    const QString table;
    const QString list_name;
};
