#include "tests/support/host_run.h"

#include <QFile>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlField>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QVariant>

#include <algorithm>
#include <functional>
#include <utility>

namespace {

QString read_text(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString printed(const QVariant &value)
{
    return value.type() == QVariant::String ? QLatin1Char('"') + value.toString() + QLatin1Char('"') : value.toString();
}

// Runs a query on the result database and hands each row over.
void for_each_row(const QString &database_path, const QString &statement,
                  const std::function<void(const QSqlRecord &)> &take)
{
    const QString name = QStringLiteral("host_run");
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        database.setDatabaseName(database_path);
        database.open();
        QSqlQuery query(statement, database);
        if (query.lastError().isValid()) {
            qFatal("%s", qPrintable(query.lastError().text()));
        }
        while (query.next()) {
            take(query.record());
        }
    }
    QSqlDatabase::removeDatabase(name);
}

} // namespace

host_run::host_run(QString scheme_name, QString root, QStringList selected_tabs)
    : scheme(std::move(scheme_name)), source_root(std::move(root)), tabs(std::move(selected_tabs))
{
    if (!source_root.endsWith(QLatin1Char('/'))) {
        source_root += QLatin1Char('/');
    }
    QObject::connect(&object, &mail::signal_extracted_records_of_plugin_overall,
                     [this](qint64 records) { record_signals.append(records); });
    QObject::connect(&object, &mail::signal_tab_processed_of_plugin_overall,
                     [this](int count) { tab_signals.append(count); });
}

void host_run::prepare()
{
    object.pub_set_essentials();
    object.pub_set_engine_type(engine_type);

    struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info general;
    general.debug_mode_status_bool = is_logging;
    general.debug_print_in_file_bool = is_logging;
    general.debug_file_path_QString = directory.filePath(QStringLiteral("run.log"));
    object.pub_set_general_info(general);

    struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info source;
    source.source_root_path_QString = source_root;
    source.source_type_internal_QString = source_type;
    source.os_scheme_internal_QString = scheme;
    source.os_scheme_display_QString = QStringLiteral("Display of ") + scheme;
    for (const QString &user : users) {
        const int colon = user.indexOf(QLatin1Char(':'));
        source.system_account_QList.append({user.left(colon), colon < 0 ? QString() : user.mid(colon + 1)});
    }
    object.pub_set_source_info(source);
    object.pub_set_source_count(source_count);
    object.pub_set_ios_uid_backup_pointer(backup_parser);
    object.pub_set_essential_for_trawl_bench_extraction(tabs, QStringList());
    object.pub_set_result_directory(directory.path());
    object.pub_create_db_tables();
    object.pub_find_source_file();
}

void host_run::extract()
{
    object.pub_extract_artifacts();
}

void host_run::finish()
{
    object.pub_remove_temporary_asthetics();
}

void host_run::run()
{
    prepare();
    extract();
    finish();
}

QStringList host_run::log() const
{
    const QRegularExpression form(
        QStringLiteral(R"(^\[[^]]+\]\[TRAWL_[A-Z]+\]\[Artifacts Extraction\]\[([^]]*)\]:-- )"));
    QStringList lines = read_text(directory.filePath(QStringLiteral("run.log"))).split(QLatin1Char('\n'));
    lines.removeLast(); // behind the last line end
    for (QString &line : lines) {
        line.replace(form, QStringLiteral("\\1: "));
        line.replace(directory.path() + QLatin1String("/Artifacts_Result/Mail/tmp/"), QLatin1String("TMP/"));
        if (source_root != QLatin1String("/")) {
            line.replace(source_root, QLatin1String("SOURCE/"));
        }
    }
    return lines;
}

QStringList host_run::log_of(const QString &function) const
{
    const QString prefix = function + QLatin1String(": ");
    QStringList lines;
    for (const QString &line : log()) {
        if (line.startsWith(prefix)) {
            lines.append(line.mid(prefix.size()));
        }
    }
    return lines;
}

QString host_run::rows(const QString &table) const
{
    QString text;
    for_each_row(database_path(), QLatin1String("select * from ") + table + QLatin1String(" order by INT"),
                 [&text](const QSqlRecord &row) {
                     text += QLatin1String("row\n");
                     for (int i = 0; i < row.count(); ++i) {
                         if (!row.isNull(i)) {
                             text += QLatin1String("  ") + row.fieldName(i) + QLatin1String(" = ") +
                                     printed(row.value(i)) + QLatin1Char('\n');
                         }
                     }
                 });
    return text;
}

int host_run::row_count(const QString &table) const
{
    int count = -1;
    for_each_row(database_path(), QLatin1String("select count(*) from ") + table,
                 [&count](const QSqlRecord &row) { count = row.value(0).toInt(); });
    return count;
}

QString difference_to_expected(const QString &actual, const QString &expected_file_path)
{
    if (!QFile::exists(expected_file_path)) {
        return QLatin1String("no such file: ") + expected_file_path;
    }
    const QStringList expected_lines = read_text(expected_file_path).split(QLatin1Char('\n'));
    const QStringList actual_lines = actual.split(QLatin1Char('\n'));
    QString difference;
    for (int i = 0; i < std::max(expected_lines.size(), actual_lines.size()); ++i) {
        const QString expected_line = expected_lines.value(i);
        const QString actual_line = actual_lines.value(i);
        if (expected_line != actual_line) {
            difference += QStringLiteral("line %1\n- %2\n+ %3\n").arg(i + 1).arg(expected_line, actual_line);
        }
    }
    return difference;
}
