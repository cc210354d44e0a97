// Run state and the debug log.
#include "core/plugin_static_function.h"

#include <QDebug>
#include <QLocale>

int plugin_static_function::type_engine_int = -1;
int plugin_static_function::source_count_int = -1;
std::atomic<bool> plugin_static_function::bool_cancel_extraction{false};
QString plugin_static_function::source_os_version_full;
QList<struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_system_account> plugin_static_function::system_account_QList;
bool plugin_static_function::debug_mode_status_bool = false;
bool plugin_static_function::debug_print_in_file_bool = false;
bool plugin_static_function::debug_print_on_terminal_bool = false;
bool plugin_static_function::debug_encryption_status_bool = false;
QString plugin_static_function::debug_file_path_QString;
QFile plugin_static_function::debug_file_regular_QFile;

namespace {

// Closes each enciphered record of the log file, which has no line ends then.
const char *const record_separator = "<[{()}]>";

// "virtual void mail::pub_extract_artifacts()" becomes "mail::pub_extract_artifacts".
QString qualified_name_of(const QString &function_info)
{
    QString name = function_info.trimmed();
    if (name.isEmpty()) {
        return QStringLiteral("FUNCTION INFO IS EMPTY ---FAILED--- debug!!!");
    }
    name = name.left(name.indexOf(QLatin1Char('('))).trimmed();
    return name.mid(name.lastIndexOf(QLatin1Char(' ')) + 1).trimmed();
}

// Evidence speaks in log lines too, through names and error texts: it must not write lines of its own.
QString on_one_line(QString message)
{
    return message.replace(QLatin1Char('\n'), QLatin1String("\\n")).replace(QLatin1Char('\r'), QLatin1String("\\r"));
}

// The local time as it stands in a line. It is put into words once a second: some operations log several lines a row.
// Month names are English, whatever the examiner's locale: a log is read elsewhere too.
QString time_of_line()
{
    static qint64 worded_second = -1;
    static QString words;
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    if (now != worded_second) {
        worded_second = now;
        words = QLocale::c().toString(QDateTime::fromSecsSinceEpoch(now), QStringLiteral("yyyy-MMM-ddThh-mm-ss"));
    }
    return words;
}

QString edition_label_of(int engine_type)
{
    switch (engine_type) {
    case 0:
        return QStringLiteral("TRAWL_BENCH");
    case 1:
        return QStringLiteral("TRAWL_SWEEP");
    case 2:
        return QStringLiteral("TRAWL_RELAY");
    default:
        return QStringLiteral(" -----FAILED----- to find Engine Type ][") + QString::number(engine_type);
    }
}

} // namespace

void plugin_static_function::set_essentials()
{
    debug_file_path_QString.clear();
    system_account_QList.clear();
    type_engine_int = -1;
    source_count_int = -1;
    bool_cancel_extraction = false;
    debug_mode_status_bool = false;
    debug_print_in_file_bool = false;
    debug_print_on_terminal_bool = false;
}

void plugin_static_function::set_engine_type(int engine_type)
{
    type_engine_int = engine_type;
}

void plugin_static_function::set_source_count(int source_count)
{
    source_count_int = source_count;
}

void plugin_static_function::set_cancel_extraction(bool cancel)
{
    bool_cancel_extraction = cancel;
}

void plugin_static_function::set_general_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info &general_info)
{
    debug_file_path_QString = general_info.debug_file_path_QString;
    debug_mode_status_bool = general_info.debug_mode_status_bool;
    debug_print_on_terminal_bool = general_info.debug_print_on_terminal_bool;
    debug_print_in_file_bool = general_info.debug_print_in_file_bool;
    debug_encryption_status_bool = general_info.debug_encryption_status_bool;
    if (!debug_mode_status_bool || !debug_print_in_file_bool) {
        return;
    }
    close_debug_file(); // a run before may have left without closing it
    debug_file_regular_QFile.setFileName(debug_file_path_QString);
    if (!debug_file_path_QString.isEmpty()) {
        debug_file_regular_QFile.open(QIODevice::Append);
    }
}

void plugin_static_function::set_source_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info &source_info)
{
    source_os_version_full = source_info.source_os_version_full;
    system_account_QList = source_info.system_account_QList;
}

void plugin_static_function::set_desktop_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_desktop_info &) {}

void plugin_static_function::close_debug_file()
{
    if (debug_file_regular_QFile.isOpen()) {
        debug_file_regular_QFile.flush();
        debug_file_regular_QFile.close();
    }
}

void plugin_static_function::app_debug(const QString &message, const QString &function_info)
{
    if (!debug_mode_status_bool) {
        return;
    }
    const QString line = QLatin1Char('[') + time_of_line() + QLatin1String("][") + edition_label_of(type_engine_int) +
                         QLatin1String("][Artifacts Extraction][") + qualified_name_of(function_info) +
                         QLatin1String("]:-- ") + on_one_line(message);

    if (debug_print_on_terminal_bool) {
        qDebug().noquote() << line;
    }
    if (debug_print_in_file_bool && debug_file_regular_QFile.isOpen()) {
        if (debug_encryption_status_bool) {
            const QString signature = QStringLiteral("static void plugin_static_function::app_debug(QString, QString)");
            debug_file_regular_QFile.write(encrypt_string(line, signature).toLocal8Bit() + record_separator);
        } else {
            debug_file_regular_QFile.write(line.toLocal8Bit() + '\n');
        }
        debug_file_regular_QFile.flush();
    }
}

QString plugin_static_function::get_source_count_name()
{
    return QStringLiteral("Source") + QString::number(source_count_int);
}
