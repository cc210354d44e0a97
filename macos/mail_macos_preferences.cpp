// Table preferences: one row a setting of the mail application, with the label that its settings window shows.
// Completes the table signature.
#include "core/plugin_static_function.h"
#include "core/result_session.h"
#include "core/row_writer.h"
#include "core/source_session.h"
#include "macos/mail_macos.h"
#include "macos/row_text.h"
#include "services/property_list_readers.h"

namespace {

// --- The application's list ------------------------------------------------------------------------------------------

constexpr operation_log application_log{
    "void mail_macos::xcode_extract_preferences(QString, QString, QString, QString)"};

constexpr failure_text application_destination_failure{"Destination_db open --------FAILED------"};
constexpr failure_text application_insert_failure{"[xcode_extract_preferences] insert query --------FAILED------",
                                                  "Error :- ", "Executed Query :- ", false};
constexpr const char *insert_of_application =
    "INSERT into preferences(bookmark,system_user,key,value,source_file,artifacts_relation_source_file,"
    "source_count_name, os_scheme_display)values(?,?,?,?,?,?,?,?)";

constexpr failure_text list_failure{"m_plist blank -------FAILED-------"};

// --- Signatures ------------------------------------------------------------------------------------------------------

constexpr failure_text select_failure{"[xcode_extract_preferences] select query --------FAILED------", nullptr, "",
                                      false};
constexpr failure_text update_failure{"[xcode_extract_preferences] update query --------FAILED------", nullptr, "",
                                      false};
constexpr const char *select_source_file =
    "select source_file from signature where signature_uid =  ? AND source_count_name = ?";
constexpr const char *update_selected = "update signature set is_selected = ?, source_file = ? where signature_uid = ? "
                                        "AND source_count_name = ?";
constexpr const char *update_selection_method = "update signature set signature_selection_method = ? where "
                                                "related_account_id = ? AND source_count_name = ?";

// clang-format off
constexpr shown_word selection_methods[] = {
    {"Randomize",  "At Random"},
    {"Sequential", "In Sequential Order"},
};
// clang-format on

// --- The shared list -------------------------------------------------------------------------------------------------

constexpr failure_text shared_destination_failure{"destination_db open --------FAILED------", "Error :- "};
constexpr failure_text shared_insert_failure{"insert query --------FAILED------", "Error :- ", "Executed Query :- "};
constexpr const char *insert_of_shared =
    "INSERT into preferences(bookmark,system_user,key,value,source_file,artifacts_relation_source_file,"
    "source_count_name, os_scheme_display) values(?,?,?,?,?,?,?,?)";

} // namespace

// --- From settings to rows -------------------------------------------------------------------------------------------

bool mail_macos::append_row_texts(QStringList &row_texts, preference_settings settings,
                                  const property_list_value &dictionary, const preference_context &context) const
{
    for (const preference_setting &setting : settings) {
        const QString label = QString::fromLatin1(setting.label);
        QString row_text = (this->*setting.read)(QString::fromLatin1(setting.key), dictionary, label);
        if (row_text.isEmpty() && setting.value_when_missing) {
            row_text = labelled(label, QString::fromLatin1(setting.value_when_missing));
        } else if (!row_text.isEmpty() && setting.show) {
            row_text = labelled(label, setting.show(value_of_row_text(row_text), context));
        }
        if (cancel_extraction_bool) { // the value may be one of a list that was cut off
            return false;
        }
        row_texts.append(row_text);
    }
    return true;
}

bool mail_macos::append_row_texts_of_application(QStringList &row_texts, const property_list_value &root,
                                                 const preference_context &context) const
{
    const property_list_value viewer_state = root.object_for_key("DefaultViewerState");
    const property_list_value toolbar = root.object_for_key("NSToolbar Configuration MainWindow");
    return append_row_texts(row_texts, settings_before_the_viewer_state(), root, context) &&
           append_row_texts(row_texts, settings_of_viewer_state(), viewer_state, context) &&
           append_row_texts(row_texts, settings_of_viewers(), root, context) &&
           append_row_texts(row_texts, settings_of_toolbar(), toolbar, context) &&
           append_row_texts(row_texts, settings_behind_the_viewer_state(), root, context);
}

// What stands behind a second ":+:" is not stored.
bool mail_macos::insert_preferences(row_writer &rows, const QStringList &row_texts, const QString &file,
                                    const QString &user) const
{
    const artifact_source_file shown_list = shown_source_of(file, user);
    for (const QString &row_text : row_texts) {
        if (cancel_extraction_bool) {
            return false;
        }
        const QStringList parts = row_text.split(QLatin1String(":+:"));
        const QString value = parts.value(1);
        if (parts.first().trimmed().isEmpty() || value.trimmed().isEmpty()) {
            continue;
        }
        row_values row{
            {"bookmark", QStringLiteral("0")},
            {"system_user", user},
            {"key", parts.first()},
            {"value", value},
        };
        append_source_columns(row, shown_list);
        rows.insert(row);
    }
    return true;
}

// --- The signatures --------------------------------------------------------------------------------------------------

bool mail_macos::mark_selected_signatures(result_session &destination, const property_list_value &selected,
                                          const QString &file) const
{
    source_query signature_rows{destination, application_log, select_source_file, select_failure};
    source_query update{destination, application_log, update_selected, update_failure};
    const QString source_count_name = plugin_static_function::get_source_count_name();
    for (const auto &[account_id, signature_uid] : selected.entries()) {
        if (cancel_extraction_bool) {
            return false;
        }
        const QString uid = signature_uid.text().trimmed();
        if (!signature_rows.execute({uid, source_count_name})) {
            continue;
        }
        const QString source_file = signature_rows.next() ? signature_rows.text("source_file") : QString();
        update.execute(
            {QStringLiteral("YES"), sources_with(source_file, file, application_log), uid, source_count_name});
    }
    return true;
}

bool mail_macos::store_selection_methods(result_session &destination, const property_list_value &methods) const
{
    source_query update{destination, application_log, update_selection_method, update_failure};
    const QString source_count_name = plugin_static_function::get_source_count_name();
    for (const auto &[account_id, method] : methods.entries()) {
        if (cancel_extraction_bool) {
            return false;
        }
        const QString shown_method = with_words_shown(method.text().trimmed(), selection_methods);
        update.execute({shown_method, account_id, source_count_name});
    }
    return true;
}

// --- The operations --------------------------------------------------------------------------------------------------

void mail_macos::xcode_extract_preferences(const QString &file, const QString &user, const QString &destination_db,
                                           const QString &)
{
    const operation_log &log = application_log;
    log("starts");
    if (file.isEmpty()) {
        return;
    }
    result_session destination{log, destination_db};
    if (!destination.open(application_destination_failure)) {
        log("End with failure");
        return;
    }
    const property_list list = property_list::from_file(file);
    if (!list.root().is_dictionary()) {
        log.failure(list_failure, file);
        log("End with failure ");
        return;
    }
    QStringList row_texts;
    mailbox_names names{destination, log};
    if (!append_row_texts_of_application(row_texts, list.root(), {user, cancel_extraction_bool, names}) ||
        !mark_selected_signatures(destination, list.root().object_for_key("SignaturesSelected"), file) ||
        !store_selection_methods(destination, list.root().object_for_key("SignatureSelectionMethods"))) {
        return;
    }
    row_writer rows{*this, destination, log, insert_of_application, application_insert_failure};
    if (!insert_preferences(rows, row_texts, file, user)) {
        return;
    }
    destination.finish();
    log("ends");
}

void mail_macos::xcode_extract_composing_addressing_prefs(const QString &file, const QString &user,
                                                          const QString &destination_db, const QString &)
{
    static constexpr operation_log log{
        "void mail_macos::xcode_extract_composing_addressing_prefs(QString, QString, QString, QString)"};
    log("starts");
    result_session destination{log, destination_db};
    if (!destination.open(shared_destination_failure)) {
        return;
    }
    const property_list list = property_list::from_file(file);
    if (!list.root().is_dictionary()) {
        log.failure(list_failure, file);
        log("End with failure");
        return;
    }
    QStringList row_texts;
    mailbox_names names{destination, log};
    if (!append_row_texts(row_texts, settings_of_composing(), list.root(), {user, cancel_extraction_bool, names})) {
        return;
    }
    row_writer rows{*this, destination, log, insert_of_shared, shared_insert_failure};
    if (!insert_preferences(rows, row_texts, file, user)) {
        return;
    }
    destination.finish();
    log("ends");
}
