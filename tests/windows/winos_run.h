/// A run over a Windows profile, and what its tests ask of the outcome.
#pragma once

#include "tests/support/host_run.h"

#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>
#include <QVariant>

#include <fcntl.h>
#include <sys/stat.h>

inline QString utf8(const char *text)
{
    return QString::fromUtf8(text);
}

inline QStringList words(const char *text)
{
    return utf8(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

inline QStringList lines(std::initializer_list<const char *> texts)
{
    QStringList list;
    for (const char *text : texts) {
        list.append(utf8(text));
    }
    return list;
}

struct winos_run : host_run
{
    /// In: tabs and accounts, with blanks between.
    winos_run(const QString &root, const char *tabs, const char *accounts = "anna")
        : host_run(QStringLiteral("winOS"), root, words(tabs))
    {
        users = words(accounts);
    }

    using host_run::log_of;
    /// The log lines of an operation of the extractor.
    QStringList log_of(const char *operation) const
    {
        return host_run::log_of(QLatin1String("mail_winos::") + QLatin1String(operation));
    }

    /// Makes the result database one that cannot be opened.
    bool replace_database_by_folder() const { return QFile::remove(database_path()) && QDir().mkdir(database_path()); }

    /// Runs a statement in the result database. Out: the first column of what it finds, a line a row.
    QString found_by(const QString &statement) const
    {
        QString text;
        {
            QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("winos_run"));
            database.setDatabaseName(database_path());
            database.open();
            QSqlQuery query(statement, database);
            while (query.next()) {
                text += query.value(0).toString() + QLatin1Char('\n');
            }
        }
        QSqlDatabase::removeDatabase(QStringLiteral("winos_run"));
        return text;
    }
};

inline void set_modified(const QString &path, qint64 seconds)
{
    const timespec times[] = {{0, UTIME_OMIT}, {static_cast<time_t>(seconds), 0}};
    QCOMPARE(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0), 0);
}

/// In: the name of a file in the folder of the expected rows.
inline void compare_with_expected(const QString &actual, const char *name)
{
    const QString difference = difference_to_expected(actual, QLatin1String(EXPECTED_FOLDER "/") + QLatin1String(name));
    QVERIFY2(difference.isEmpty(), qPrintable(utf8(name) + QLatin1Char('\n') + difference));
}

/// What a writer logs when nothing fails.
inline QStringList plain_log_of(const char *writer)
{
    const QString name = QLatin1Char('[') + QLatin1String(writer) + QLatin1Char(']');
    return {name + QLatin1String("---STARTS---"), name + QLatin1String("---ENDS---")};
}
