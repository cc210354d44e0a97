// Table rules: one row a rule of SyncedRules.plist in the folder MailData of a store, its criteria in the words of the
// mail application's window.
#include "core/joined_text.h"
#include "macos/listed_rows.h"
#include "macos/mail_macos.h"
#include "macos/row_text.h"

namespace {

constexpr operation_log rules_log{"void mail_macos::xcode_extract_syncedrule(QString, QString, QString, QString)"};

constexpr failure_text destination_failure{"destination_db open --------FAILED------", "Error :- "};
constexpr failure_text list_failure{"m_plist blank -------FAILED-------"};
constexpr failure_text insert_failure{"insert query --------FAILED------", "Error :- ", ""};
constexpr const char *insert_rule =
    "INSERT into rules(bookmark,system_user,met_condition,copy_to_mailbox,copy_to_mailbox_url,delete_message,"
    "flag_color,highlight_text_using_color,move_to_mailbox,move_to_mailbox_url,mark_as_flaged,mark_as_read,"
    "reply_to_message,rule_id,rule_name,send_notification,should_copy_message,should_transfer_message,play_sound,"
    "stop_evaluating_rules,forword_message,redirect_message,conditions,source_file,artifacts_relation_source_file,"
    "source_count_name,os_scheme_display) values(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";

// --- Criteria --------------------------------------------------------------------------------------------------------

// clang-format off

// A word that is part of another one stands behind it.
constexpr shown_word header_words[] = {
    {"DateIsRelative",               "Date Is Relative"},
    {"DateUnitType",                 "Date Unit Type"},
    {"GroupName",                    "Group Name"},
    {"GroupId",                      "Group ID"},
    {"DateSent",                     "Date Sent"},
    {"IsGreaterThan",                "Is greater than"},
    {"IsLessThan",                   "Is less than"},
    {"AnyRecipientIncludesFullName", "Message is addressed to my full name"},
    {"SenderIsInAddressHistory",     "Sender is in my previous recipients"},
    {"SenderIsNotInAddressHistory",  "Sender is not in my previous recipients"},
    {"SenderIsMemberOfVIPSenders",   "Sender is VIP"},
    {"AllVIPSenders",                "All VIP senders"},
    {"SenderIsNotMemberOfGroup",     "Sender is not member of group"},
    {"AnyRecipient",                 "Any recipient"},
    {"DoesNotContain",               "Does not contain"},
    {"SenderIsInAddressBook",        "Sender is in my contacts"},
    {"SenderIsNotInAddressBook",     "Sender is not in my contacts"},
    {"Body",                         "Message Content"},
    {"SenderIsMemberOfGroup",        "Sender is member of group"},
    {"IsJunkMail",                   "Messgae is junk mail"},
    {"AnyAttachment",                "Any attachment"},
    {"IsDigitallySigned",            "Message is signed"},
    {"IsEncrypted",                  "Message is encypted"},
    {"PriorityIsHigh",               "Priority is high"},
    {"PriorityIsLow",                "Priority is low"},
    {"PriorityIsNormal",             "Priority is normal"},
};

constexpr shown_word expression_words[] = {
    {"AllVIPSenders", "All VIP Senders"},
};

constexpr shown_word qualifier_words[] = {
    {"DoesNotContain", "Does not contain"},
    {"IsLessThan",     "Is less than"},
    {"EndsWith",       "Ends with"},
    {"IsEqualTo",      "Is equal to"},
    {"BeginsWith",     "Begins with"},
    {"IsGreaterThan",  "Is greater than"},
};

// clang-format on

QString text_of_criterion(const property_list_value &criterion)
{
    const QString header = stored_text("Header", criterion);
    QString expression = stored_text("Expression", criterion);
    if (header == QLatin1String("DateSent") && stored_text("DateUnitType", criterion) == QLatin1String("0")) {
        expression += QLatin1String(" days old");
    }
    QString text;
    append_part(text, "Header: ", with_words_shown(header, header_words));
    append_part(text, "Qualifier: ", with_words_shown(stored_text("Qualifier", criterion), qualifier_words));
    append_part(text, "Expression: ", with_words_shown(expression, expression_words));
    append_part(text, "Group Name: ", stored_text("GroupName", criterion));
    append_part(text, "Group ID: ", stored_text("GroupId", criterion));
    return text + QLatin1Char(';');
}

QString conditions_of(const property_list_value &criteria, const std::atomic<bool> &cancel_flag)
{
    joined_text conditions(rules_log);
    for (const property_list_value &criterion : criteria.elements()) {
        if (cancel_flag || conditions.is_full()) {
            break;
        }
        if (criterion.is_dictionary()) {
            conditions.append(text_of_criterion(criterion), QString());
        }
    }
    return criteria.is_array() ? without_ending(QStringLiteral("") + conditions.text(), ";;") : QString();
}

// --- Rules -----------------------------------------------------------------------------------------------------------

enum class reading
{
    all_or_any, // whether all criteria have to be met
    text,
    path, // of a user, who may stand there as "~"
    color,
    recipients,
    criteria
};

struct rule_column
{
    const char *key;
    reading how;
    const char *name;
};

// clang-format off

constexpr shown_number flag_colors[] = {
    {0, "Red"},
    {1, "Orange"},
    {2, "Yellow"},
    {3, "Green"},
    {4, "Blue"},
    {5, "Purple"},
    {6, "Grey"},
};

// In the order of the statement.
constexpr rule_column rule_columns[] = {
    {"AllCriteriaMustBeSatisfied", reading::all_or_any, "met_condition"},
    {"CopyToMailbox",              reading::path,       "copy_to_mailbox"},
    {"CopyToMailboxURL",           reading::text,       "copy_to_mailbox_url"},
    {"Deletes",                    reading::text,       "delete_message"},
    {"FlagColor",                  reading::color,      "flag_color"},
    {"HighlightTextUsingColor",    reading::text,       "highlight_text_using_color"},
    {"Mailbox",                    reading::path,       "move_to_mailbox"},
    {"MailboxURL",                 reading::text,       "move_to_mailbox_url"},
    {"MarkFlagged",                reading::text,       "mark_as_flaged"},
    {"MarkRead",                   reading::text,       "mark_as_read"},
    {"ResponseMessage",            reading::text,       "reply_to_message"},
    {"RuleId",                     reading::text,       "rule_id"},
    {"RuleName",                   reading::text,       "rule_name"},
    {"SendNotification",           reading::text,       "send_notification"},
    {"ShouldCopyMessage",          reading::text,       "should_copy_message"},
    {"ShouldTransferMessage",      reading::text,       "should_transfer_message"},
    {"Sound",                      reading::path,       "play_sound"},
    {"StopEvaluatingRules",        reading::text,       "stop_evaluating_rules"},
    {"ForwardRecipients",          reading::recipients, "forword_message"},
    {"RedirectRecipients",         reading::recipients, "redirect_message"},
    {"Criteria",                   reading::criteria,   "conditions"},
};

// clang-format on

QString value_of(const rule_column &column, const property_list_value &rule, const QString &user,
                 const std::atomic<bool> &cancel_flag)
{
    switch (column.how) {
    case reading::all_or_any:
        return QString::fromLatin1(stored_yes_no(column.key, rule) == QLatin1String("YES") ? "all" : "any");
    case reading::path:
        return with_home_expanded(with_escapes_decoded(stored_text(column.key, rule)), user);
    case reading::color: {
        const property_list_value color = rule.object_for_key(column.key);
        return color.is_number() ? text_of_number(color.integer_value(), flag_colors) : QString();
    }
    case reading::recipients:
        return with_round_brackets(with_escapes_decoded(stored_list(column.key, rule, cancel_flag)));
    case reading::criteria:
        return conditions_of(rule.object_for_key(column.key), cancel_flag);
    case reading::text:
        break;
    }
    return with_escapes_decoded(stored_text(column.key, rule));
}

std::optional<row_values> values_of_rule(const property_list_value &rule, const std::atomic<bool> &cancel_flag,
                                         const QString &user)
{
    if (!rule.is_dictionary()) {
        return std::nullopt;
    }
    row_values values;
    for (const rule_column &column : rule_columns) {
        values.push_back({column.name, value_of(column, rule, user, cancel_flag)});
    }
    return values;
}

} // namespace

void mail_macos::xcode_extract_syncedrule(const QString &file, const QString &user, const QString &destination_db,
                                          const QString &)
{
    static constexpr listed_rows rules{
        rules_log, destination_failure, list_failure, "end with failure", entries_of_array, insert_rule, insert_failure,
    };
    extract_listed_rows(rules, file, user, destination_db, [&](const QString &, const property_list_value &rule) {
        return values_of_rule(rule, cancel_extraction_bool, user);
    });
}
