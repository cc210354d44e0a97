// Table mail_data: one row a mail file that a message of the mail application names, from its header lines.
#include "windows/eml_header_scan.h"
#include "windows/mail_store_rows.h"
#include "windows/mail_winos.h"

#include <QByteArray>

namespace {

constexpr operation_log eml_log{"int mail_winos::extract_eml_info(QString, QString)"};
constexpr failure_text file_open_failure{"[extract_eml_info] ---ERROR--- File Opening..."};
constexpr const char *line_behind_open_failure = "[extract_eml_info]  my_file.errorString()";
constexpr int bytes_at_a_time = 1 << 16;

// Out: whether the whole file was read; false when the extraction was cancelled.
bool scan_file(const file_descriptor &file, eml_header_scan &headers)
{
    QByteArray block(bytes_at_a_time, Qt::Uninitialized);
    for (;;) {
        const qint64 count = read_block(file, block.data(), static_cast<std::size_t>(block.size()));
        if (count <= 0) {
            return headers.finish();
        }
        if (!headers.take(block.constData(), static_cast<int>(count))) {
            return false;
        }
    }
}

} // namespace

int mail_winos::extract_eml_info(QString eml_path, QString inside_text)
{
    eml_log("[extract_eml_info]---- STARTS----");
    // What leads out of the source counts as a file that is not there.
    const file_descriptor file = source.contains(eml_path) ? open_source_file(eml_path) : file_descriptor();
    if (!file.is_open()) {
        eml_log.failure(file_open_failure, eml_path);
        eml_log(line_behind_open_failure);
        return -1;
    }
    eml_header_scan scan(cancel_extraction_bool);
    if (!scan_file(file, scan)) {
        return 0;
    }
    if (scan.has_cut_line()) {
        eml_log("[extract_eml_info] line longer than 4 MiB, its end is left out-----", eml_path);
    }
    const eml_header_values headers = scan.values();
    if (!headers.from.isEmpty() && !inside_text.contains(QLatin1String("<html"))) {
        // The database is the one that the message has just been written to: a second connection would wait for it.
        mail_store_rows->mail_files.insert(row_of_mail_file(eml_path, inside_text, headers));
    }
    eml_log("[extract_eml_info]---- ENDS----");
    return 0;
}

row_values mail_winos::row_of_mail_file(const QString &eml_path, const QString &inside_text,
                                        const eml_header_values &headers) const
{
    const row_source shared = row_source_of(eml_path, eml_path);
    row_values row{
        {"system_user", shared.system_user},
        {"domain_user", shared.domain_user},
        {"from_mail", headers.from},
        {"to_mail", headers.to},
        {"subject", headers.subject},
        {"importance", headers.importance},
        {"inside_text", inside_text},
        {"date", headers.date},
        {"file_name", eml_path.mid(eml_path.lastIndexOf(QLatin1Char('/')) + 1)},
    };
    append_source_columns(row, shared);
    return row;
}
