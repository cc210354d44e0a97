/// Evidence of the mail configuration: property lists in the folders MailData of the stores of "anna" and "ben", and
/// runs over them.
#pragma once

#include "evidence/files.h"
#include "evidence/macos_mail_tree.h"
#include "tests/macos/settled_rows.h"

#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

inline QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

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
    QFile file(QStringLiteral(EXPECTED_FOLDER "/") + QLatin1String(expected_file));
    if (!file.open(QFile::ReadOnly)) {
        qFatal("no cases: %s", expected_file);
    }
    for (const QString &line : QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const int arrow = line.indexOf(QLatin1String(" =>"));
        if (!line.startsWith(QLatin1Char('#'))) {
            cases.append({line.left(arrow), line.mid(arrow + 4)});
        }
    }
    return cases;
}

class configuration_source
{
public:
    /// In: the tab, which is the table too, and the name of its list.
    configuration_source(const char *table, const char *list_name)
        : table(QString::fromLatin1(table)), list_name(QString::fromLatin1(list_name))
    {
    }

    QString list_path(const char *user, int generation) const
    {
        return tree.store_folder(QString::fromLatin1(user), generation) + QLatin1String("/MailData/") + list_name;
    }
    void write(const char *user, int generation, const QVariant &root,
               evidence::property_list_form form = evidence::property_list_form::binary) const
    {
        evidence::write_property_list_file(list_path(user, generation), root, form);
    }

    std::unique_ptr<host_run> new_run() const
    {
        auto run = std::make_unique<host_run>(QStringLiteral("macOS"), tree.root(), QStringList{table});
        run->users = QStringList{QStringLiteral("anna"), QStringLiteral("ben")};
        return run;
    }
    /// The values of a column in the order of the rows; those that are NULL are left out.
    QStringList column(const host_run &run, const char *name) const
    {
        QStringList values;
        const QString begin = QLatin1String("  ") + QLatin1String(name) + QLatin1String(" = \"");
        for (const QString &line : run.rows(table).split(QLatin1Char('\n'))) {
            if (line.startsWith(begin)) {
                values.append(line.mid(begin.size()).chopped(1));
            }
        }
        return values;
    }
    QString difference_to(const char *expected_file, const host_run &run) const
    {
        return difference_to_expected(settled_rows(run, table),
                                      QStringLiteral(EXPECTED_FOLDER "/") + QLatin1String(expected_file));
    }

    const QString table;
    const QString list_name;
    QTemporaryDir folder;
    evidence::macos_mail_tree tree{folder.filePath(QStringLiteral("source"))};
};

inline void run_statement(const host_run &run, const QString &statement)
{
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("test"));
        database.setDatabaseName(run.database_path());
        QVERIFY(database.open());
        QVERIFY(QSqlQuery(database).exec(statement));
    }
    QSqlDatabase::removeDatabase(QStringLiteral("test"));
}

/// Puts a folder in place of the result database.
inline void close_result_database(const host_run &run)
{
    QVERIFY(QFile::remove(run.database_path()));
    QVERIFY(QDir().mkdir(run.database_path()));
}
