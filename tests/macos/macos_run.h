/// Runs over the evidence of a macOS volume: what the tests write evidence with, and what they look at behind a run.
#pragma once

#include "evidence/files.h"
#include "evidence/macos_mail_tree.h"
#include "tests/support/host_run.h"
#include "tests/support/tree_snapshot.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

#include <algorithm>
#include <functional>
#include <thread>

inline QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

inline QStringList texts(std::initializer_list<const char *> list)
{
    QStringList result;
    for (const char *utf8 : list) {
        result.append(text(utf8));
    }
    return result;
}

inline QDateTime instant(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC);
}

/// A value of a property list, from JSON. The keys of a dictionary come out sorted; {"date": milliseconds} is a date,
/// {"data": text} its bytes.
inline QVariant value_of(const QJsonValue &json)
{
    if (json.isObject()) {
        evidence::property_list_dictionary dictionary;
        const QJsonObject object = json.toObject();
        if (object.keys() == QStringList{text("date")}) {
            return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(object.begin()->toDouble()), Qt::UTC);
        }
        if (object.keys() == QStringList{text("data")}) {
            return object.begin()->toString().toUtf8();
        }
        for (auto entry = object.begin(); entry != object.end(); ++entry) {
            dictionary.append({entry.key(), value_of(entry.value())});
        }
        return dictionary;
    }
    if (json.isArray()) {
        QVariantList list;
        for (const QJsonValue &element : json.toArray()) {
            list.append(value_of(element));
        }
        return list;
    }
    const auto whole = static_cast<qint64>(json.toDouble());
    return json.isDouble() && static_cast<double>(whole) == json.toDouble() ? QVariant(whole) : json.toVariant();
}

/// The same, of any JSON text.
inline QVariant json(const QByteArray &utf8)
{
    QJsonParseError error;
    const QJsonArray only_value = QJsonDocument::fromJson('[' + utf8 + ']', &error).array();
    if (only_value.size() != 1) {
        qFatal("%s: %s", qPrintable(error.errorString()), utf8.constData());
    }
    return value_of(only_value.at(0));
}

inline void write_list(const QString &path, const QVariant &root,
                       evidence::property_list_form form = evidence::property_list_form::binary)
{
    evidence::write_property_list_file(path, root, form);
}

/// An empty tree to write into.
struct macos_source
{
    QTemporaryDir folder;
    evidence::macos_mail_tree tree{folder.filePath(QStringLiteral("source"))};
};

inline std::unique_ptr<host_run> new_run(const evidence::macos_mail_tree &tree, const QStringList &tabs,
                                         const QStringList &users = texts({"anna"}))
{
    auto run = std::make_unique<host_run>(text("macOS"), tree.root(), tabs);
    run->users = users;
    return run;
}

inline std::unique_ptr<host_run> whole_run(const evidence::macos_mail_tree &tree, const QStringList &tabs,
                                           const QStringList &users = texts({"anna"}))
{
    auto run = new_run(tree, tabs, users);
    run->run();
    return run;
}

inline void with_result_database(const host_run &run, const std::function<void(QSqlQuery &)> &use)
{
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(text("QSQLITE"), text("test"));
        database.setDatabaseName(run.database_path());
        QVERIFY(database.open());
        QSqlQuery query(database);
        use(query);
    }
    QSqlDatabase::removeDatabase(text("test"));
}

inline void run_statement(const host_run &run, const QString &statement)
{
    with_result_database(run, [&statement](QSqlQuery &query) { QVERIFY(query.exec(statement)); });
}

/// The first column of a query's rows.
inline QStringList values_of(const host_run &run, const QString &select)
{
    QStringList values;
    with_result_database(run, [&](QSqlQuery &query) {
        QVERIFY(query.exec(select));
        while (query.next()) {
            values.append(query.value(0).toString());
        }
    });
    return values;
}

/// Extracts while another thread cancels after so many milliseconds.
inline void extract_and_cancel(host_run &run, int milliseconds)
{
    std::thread host([&run, milliseconds] {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        run.plugin().pub_cancel_extraction();
    });
    run.extract();
    host.join();
}

/// The rows of a table, as host_run gives them, in the order of their file paths, without their ids; a creation time of
/// a file that the test itself has made stands as "now".
inline QString settled_rows(const host_run &run, const QString &table)
{
    constexpr qint64 longest_test = 3600;
    QString rows_text = run.rows(table);
    rows_text.remove(QRegularExpression(QStringLiteral("  INT = \\d+\n")));
    const QRegularExpression created(QStringLiteral("  date_added = (\\d+)\n"));
    for (QRegularExpressionMatch match = created.match(rows_text); match.hasMatch();
         match = created.match(rows_text, match.capturedEnd())) {
        if (QDateTime::currentSecsSinceEpoch() - match.captured(1).toLongLong() < longest_test) {
            rows_text.replace(match.capturedStart(), match.capturedLength(), QStringLiteral("  date_added = now\n"));
        }
    }
    QStringList rows = rows_text.split(QRegularExpression(QStringLiteral("(^|(?<=\n))row\n")), Qt::SkipEmptyParts);
    const QRegularExpression path(QStringLiteral("  file_path = .*\n"));
    std::stable_sort(rows.begin(), rows.end(), [&path](const QString &left, const QString &right) {
        return path.match(left).captured() < path.match(right).captured();
    });
    for (QString &row : rows) {
        row.prepend(QLatin1String("row\n"));
    }
    return rows.join(QString());
}

inline QString path_of_expected(const char *expected_file)
{
    return QStringLiteral(EXPECTED_FOLDER "/") + QLatin1String(expected_file);
}

/// Fails the test where a text is not that of the file in the folder "expected".
inline void compare_with(const char *expected_file, const QString &actual)
{
    const QString difference = difference_to_expected(actual, path_of_expected(expected_file));
    QVERIFY2(difference.isEmpty(), qPrintable(QLatin1String(expected_file) + QLatin1Char('\n') + difference));
}

/// The text of a file in the folder "expected".
inline QString expected_text(const char *expected_file)
{
    QFile file(path_of_expected(expected_file));
    if (!file.open(QFile::ReadOnly)) {
        qFatal("no such file: %s", expected_file);
    }
    return QString::fromUtf8(file.readAll());
}
