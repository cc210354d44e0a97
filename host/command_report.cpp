#include "host/command_report.h"

#include "host/command_line.h"
#include "host/report_page.h"
#include "host/report_summary.h"
#include "host/report_tables.h"
#include "host/result_database.h"
#include "host/terminal.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

namespace {

// What the page's first bytes are: a file that begins otherwise is not ours to replace.
constexpr char page_mark[] = "<!DOCTYPE html>\n<!-- written by mail-extract report -->\n";

bool is_report(const QString &path)
{
    QFile file(path);
    const QByteArray mark(page_mark);
    return file.open(QIODevice::ReadOnly) && file.read(mark.size()) == mark;
}

void check_place(const QString &path)
{
    const QFileInfo place(path);
    if (place.isSymLink() || (place.exists() && !place.isFile())) {
        throw unusable_input{QStringLiteral("\"%1\" is not a regular file: give another name").arg(path)};
    }
    if (place.exists() && !is_report(path)) {
        throw unusable_input{
            QStringLiteral("\"%1\" stands there already and is no report of mail-extract: give another name")
                .arg(path)};
    }
    if (!place.dir().exists()) {
        throw unusable_input{QStringLiteral("the report's folder \"%1\" does not exist: make it, or give another place")
                                 .arg(place.path())};
    }
}

QJsonObject summary_of(const result_database &database, const QJsonArray &tables, const report_limits &limits)
{
    return {{QStringLiteral("version"), QStringLiteral(MAIL_EXTRACT_VERSION)},
            {QStringLiteral("written"), QDateTime::currentSecsSinceEpoch()},
            {QStringLiteral("database"), report_database(database)},
            {QStringLiteral("value_limit"), limits.characters_of_a_value},
            {QStringLiteral("tables"), tables},
            {QStringLiteral("sources"), report_sources(database)},
            {QStringLiteral("pictures"), report_pictures(database)},
            {QStringLiteral("log"), report_log(database)}};
}

void print_outcome(const QString &path, const QJsonArray &tables)
{
    qint64 all = 0;
    for (const QJsonValue &described : tables) {
        const QJsonObject table = described.toObject();
        const auto rows = static_cast<qint64>(table.value(QLatin1String("rows")).toDouble());
        const auto embedded = static_cast<qint64>(table.value(QLatin1String("embedded")).toDouble());
        all += embedded;
        if (embedded < rows) {
            print_line(QStringLiteral("The page holds the first %1 of %2 rows of %3 (show --csv gives all)")
                           .arg(QString::number(embedded), QString::number(rows),
                                escaped_for_terminal(table.value(QLatin1String("name")).toString())));
        }
    }
    print_line(QStringLiteral("Report: %1, %2 tables, %3 rows, %4 MB")
                   .arg(escaped_for_terminal(path), QString::number(tables.size()), QString::number(all),
                        QString::number(static_cast<double>(QFileInfo(path).size()) / 1e6, 'f', 1)));
}

} // namespace

int command_report(const QStringList &arguments)
{
    const command_arguments given{QStringLiteral("report"),
                                  arguments,
                                  {{"html", option_description::value}, {"limit", option_description::value}},
                                  {QStringLiteral("DIR")},
                                  1};
    if (!given.has("html")) {
        throw unusable_input{
            QStringLiteral("\"report\" needs --html FILE, the page to write (see mail-extract report --help)")};
    }
    report_limits limits;
    limits.rows_of_a_table = given.whole_number("limit", limits.rows_of_a_table);
    const result_database database(find_result_database(given.at(0)));
    const QString path = QFileInfo(given.value("html")).absoluteFilePath();
    check_place(path);

    QSaveFile file(path); // a page that was not finished never stands there
    const auto refuse = [&] {
        throw unusable_input{QStringLiteral("the report \"%1\" cannot be written: %2").arg(path, file.errorString())};
    };
    if (!file.open(QIODevice::WriteOnly)) {
        refuse();
    }
    report_page page(file);
    const QJsonArray tables = write_report_tables(page, database, limits);
    page.add_block(QStringLiteral("summary"), summary_of(database, tables, limits));
    if (!page.finish() || !file.commit()) {
        refuse();
    }
    print_outcome(path, tables);
    return exit_done;
}
