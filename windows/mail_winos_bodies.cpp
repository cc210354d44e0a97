// Table mail_data: one row a file of the UniStore that is HTML, or holds HTML somewhere, with its plain text.
#include "services/byte_text.h"
#include "services/html_text.h"
#include "services/source_mime_type.h"
#include "windows/body_rows.h"
#include "windows/html_block_scan.h"
#include "windows/mail_winos.h"
#include "windows/profile_files.h"

#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QTextStream>

#include <algorithm>
#include <cerrno>

namespace {

constexpr operation_log mail_data_log{"void mail_winos::extract_mail_data()"};
constexpr operation_log converter_log{"QString mail_winos::html_to_ascii_converter(const QString &, const QString &)"};
constexpr operation_log data_log{"QByteArray mail_winos::get_data_of_file(const QString &)"};
constexpr operation_log html_file_log{"QString mail_winos::creat_html_file(const QString &, const QByteArray &)"};
constexpr operation_log html_text_log{"QString mail_winos::get_text_from_html(const QString &)"};

constexpr failure_text text_open_failure{"[extract_mail_data]File open ----FAILED---- ", "--Error---"};
constexpr failure_text html_open_failure{"[html_to_ascii_converter]File Open ------UNSUCCESSFUL------: ",
                                         "---Error----"};
constexpr failure_text data_open_failure{"-----FAILED---- Opening File...", ""};
constexpr failure_text html_make_failure{"[creat_html_file]File Open ------FAILED------: ", "---Error----"};
constexpr failure_text html_text_failure{"[get_text_from_html]File Open ------UNSUCCESSFUL------: ", "---Error----"};

constexpr qint64 largest_html = html_block_scan::largest_block;
constexpr qint64 bytes_at_a_time = 1 << 20;

// Opens a file of the source as a text, in which lines end with "\n" alone.
bool open_as_text(QFile &file, const QString &path)
{
    errno = ENOENT; // stands for what is no regular file
    file_descriptor descriptor = open_source_file(path);
    return descriptor.is_open() &&
           file.open(descriptor.release(), QIODevice::ReadOnly | QIODevice::Text, QFileDevice::AutoCloseHandle);
}

// The name of what is made of a file: another suffix in the place of its own.
QString name_with_suffix(const QString &path, const char *suffix)
{
    QString name = path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
    const QString own_suffix = plugin_static_function::mining_suffix(path);
    if (!own_suffix.isEmpty()) {
        name.remove(own_suffix);
    }
    return name + QLatin1String(suffix);
}

// The text file of an earlier file may bear the same name: nothing of it stays.
void write_text_file(const QString &path, const QString &text)
{
    QFile file(path);
    if (file.open(QIODevice::ReadWrite | QIODevice::Truncate)) {
        QTextStream stream(&file);
        stream.setCodec("UTF-8");
        stream << text;
    }
}

} // namespace

// Cancelling leaves the folder of the text files where it is.
void mail_winos::extract_mail_data()
{
    mail_data_log("[extract_mail_data]---STARTS---");
    body_rows = std::make_unique<body_row_writers>(*this, destination_db_path_QString);
    const auto close_database = qScopeGuard([this] { body_rows.reset(); });
    for (const QString &folder : qAsConst(unistore_data_folder_QStringList)) {
        profile_files files(source, folder, cancel_extraction_bool);
        while (files.next()) {
            if (!extract_body_file(files.path())) {
                return;
            }
        }
        if (cancel_extraction_bool) {
            return;
        }
    }
    plugin_static_function::remove_directory(result_directory_QString + QLatin1String("Files/"));
    mail_data_log("[extract_mail_data]---ENDS---");
}

// Out: false when the result database does not open.
bool mail_winos::extract_body_file(const QString &file_path)
{
    // The times come first: where the source is not ours, reading the file moves one of them.
    const posix_timestamp_record times = times_of_body_file(file_path);
    const QString text_path = html_to_ascii_converter(file_path, result_directory_QString);
    if (text_path.isEmpty()) {
        extract_non_html_files(file_path);
        return true;
    }
    if (!body_rows->open(body_row_writers::kind::html_file)) {
        return false;
    }
    QFile text_file(text_path);
    if (!text_file.open(QIODevice::ReadOnly)) {
        mail_data_log.failure(text_open_failure, text_path, text_file.errorString());
        return true;
    }
    const QString text = text_of_unknown_encoding(bytes_before_zero(text_file.readAll()));
    body_rows->insert(body_row_writers::kind::html_file, row_of_body_file(file_path, text, times));
    return true;
}

posix_timestamp_record mail_winos::times_of_body_file(const QString &file_path) const
{
    const QString system_user =
        plugin_static_function::extract_user_name_from_sourcefile(file_path, source_root_path_QString).system_user;
    QString path = plugin_static_function::get_complete_file_path(file_path, system_user, source_type_internal_QString);
    if (path.startsWith(source_root_path_QString)) {
        path.remove(0, source_root_path_QString.size());
    }
    return plugin_static_function::get_posix_timestamp(path, source_root_path_QString);
}

void mail_winos::extract_non_html_files(const QString &file_path)
{
    if (!body_rows->open(body_row_writers::kind::other_file)) {
        return;
    }
    const posix_timestamp_record times = plugin_static_function::get_posix_timestamp(
        file_path.mid(source_root_path_QString.size()), source_root_path_QString);
    QByteArray data = get_data_of_file(file_path);
    if (data.contains("text/html")) {
        const QString html_path = creat_html_file(file_path, data);
        data.clear(); // a large one does not stay beside what is made of it
        body_rows->insert(body_row_writers::kind::other_file,
                          row_of_body_file(file_path, get_text_from_html(html_path), times));
    }
    plugin_static_function::remove_directory(result_directory_QString + QLatin1String("Files/"));
}

row_values mail_winos::row_of_body_file(const QString &file_path, const QString &text,
                                        const posix_timestamp_record &times) const
{
    const row_source shared = row_source_of(file_path, file_path);
    const QString shown_file = plugin_static_function::get_relative_file_path(
        behind_source_root(file_path), shared.system_user, source_type_internal_QString);
    row_values row{
        {"system_user", shared.system_user},
        {"domain_user", shared.domain_user},
        {"body", text.trimmed()},
        {"file_name", file_path.mid(file_path.lastIndexOf(QLatin1Char('/')) + 1)},
        {"file_size", plugin_static_function::mining_size(file_path)},
        {"file_path", shown_file},
        {"export_file_paths", shown_file},
        {"windows_path", QString(file_path).replace(source_root_path_QString, QLatin1String("C:/"))},
        {"creation_timestamp", QString::number(times.creation_timestamp)},
        {"modification_timestamp", QString::number(times.modification_timestamp)},
        {"last_access_timestamp", QString::number(times.last_access_timestamp)},
    };
    append_source_columns(row, shared);
    return row;
}

QString mail_winos::html_to_ascii_converter(const QString &file_path, const QString &output_folder)
{
    QFile file;
    if (!open_as_text(file, file_path)) {
        converter_log.failure(html_open_failure, file_path, qt_error_string(errno));
        return QString();
    }
    if (mime_type_of_source_file(file_path) != QLatin1String("text/html")) {
        return QString();
    }
    if (file.size() > largest_html) {
        converter_log("HTML file larger than 32 MiB, its end is left out-----", file_path);
    }
    const html_text converted =
        plain_text_of_html(text_of_unknown_encoding(bytes_before_zero(file.read(std::min(file.size(), largest_html)))));
    if (converted.excess) {
        converter_log("HTML beyond bounds, only freed of its markup-----",
                      QLatin1String(converted.excess) + QLatin1String(" of ") + file_path);
    }
    const QString folder = output_folder + QLatin1String("Files/");
    QDir().mkdir(folder);
    const QString text_path = folder + name_with_suffix(file_path, "txt");
    write_text_file(text_path, converted.text.trimmed());
    return text_path;
}

QByteArray mail_winos::get_data_of_file(const QString &file_path)
{
    QFile file;
    if (!open_as_text(file, file_path)) {
        data_log.failure(data_open_failure, file_path, qt_error_string(errno));
        return QByteArray();
    }
    html_block_scan scan;
    for (QByteArray piece = file.read(bytes_at_a_time); !piece.isEmpty(); piece = file.read(bytes_at_a_time)) {
        scan.take(piece);
    }
    if (scan.has_cut_block()) {
        data_log("HTML block larger than 32 MiB, its end is left out-----", file_path);
    }
    return scan.found();
}

QString mail_winos::creat_html_file(const QString &file_path, const QByteArray &data)
{
    static constexpr int end_mark_size = 7;
    const int begin = data.indexOf("<html");
    const int end = begin < 0 ? -1 : data.indexOf("</html>", begin);
    if (end < 0) {
        return QString();
    }
    const QString folder = result_directory_QString + QLatin1String("Files/");
    QDir().mkdir(folder);
    QFile file(folder + name_with_suffix(file_path, "html"));
    if (!file.open(QIODevice::WriteOnly)) {
        html_file_log.failure(html_make_failure, file.fileName(), file.errorString());
        return QString();
    }
    file.write(data.constData() + begin, end + end_mark_size - begin);
    return file.fileName();
}

QString mail_winos::get_text_from_html(const QString &html_path)
{
    const QString folder = result_directory_QString + QLatin1String("Files/");
    QDir().mkpath(folder);
    const QString text_path = html_to_ascii_converter(html_path, folder);
    QFile file(text_path);
    if (text_path.isEmpty() || !file.open(QIODevice::ReadOnly)) {
        html_text_log.failure(html_text_failure, text_path, file.errorString());
        return QLatin1String("");
    }
    return text_of_unknown_encoding(bytes_before_zero(file.readAll()));
}
