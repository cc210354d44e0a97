// Table smart_mailboxes: one row a smart mailbox of SyncedSmartMailboxes.plist, with its criteria as the mail
// application's window words them.
#include "core/joined_text.h"
#include "core/plugin_static_function.h"
#include "macos/listed_rows.h"
#include "macos/mail_macos.h"
#include "macos/row_text.h"

#include <QDateTime>
#include <QLocale>

namespace {

constexpr operation_log mailboxes_log{"void mail_macos::xcode_extract_smartbox(QString, QString, QString, QString)"};
constexpr operation_log dates_log{"QString mail_macos::get_dates_from_nsarray(QString, property_list_value, QString)"};

constexpr failure_text destination_open_failure{"destination_db open --------FAILED------ ", "Error :- "};
constexpr failure_text list_failure{" m_plist blank -------FAILED-------"};
constexpr failure_text insert_failure{" insert query -----FAILED-----", "Error :- ", "Executed Query :- "};
constexpr const char *insert_smart_mailbox =
    "insert into smart_mailboxes(bookmark,system_user,mailbox_name,mailbox_id,include_messages_from_trash,"
    "include_messages_from_sent,met_condition,conditions,source_file,artifacts_relation_source_file,"
    "source_count_name,os_scheme_display) values(?,?,?,?,?,?,?,?,?,?,?,?)";

// clang-format off

// --- Criteria --------------------------------------------------------------------------------------------------------

constexpr const char *unit_is_date = "0"; // of DateUnitType: the expression is an instant, not an age

constexpr shown_word age_units[] = {
    {"1", " days"},
    {"2", " weeks"},
    {"3", " months"},
    {"4", " years"},
};

constexpr shown_number attachment_types[] = {
    {0, "Application"},
    {1, "Archieve"},
    {2, "Document"},
    {3, "Executable"},
    {4, "Image"},
    {5, "Movie"},
    {6, "Music"},
    {7, "PDF"},
    {8, "Presentation"},
    {9, "Text"},
};

constexpr shown_word qualifier_words[] = {
    {"IsLessThan",     "Is less than"},
    {"IsGreaterThan",  "Is greater than"},
    {"DoesNotContain", "Does not contain"},
    {"IsNotEqualTo",   "Is not equal to"},
    {"IsEqualTo",      "Is equal to"},
};

constexpr shown_word header_words[] = {
    {"DateReceived",               "Date Received"},
    {"DoesNotContain",             "Does not contain"},
    {"Body",                       "Entire message"},
    {"BeginsWith",                 "Begins with"},
    {"EndsWith",                   "Ends with"},
    {"IsEqualTo",                  "Is equal to"},
    {"AnyRecipient",               "Any recipient"},
    {"SenderIsMemberOfGroup",      "Sender is member of group"},
    {"SenderIsMemberOfVIPSenders", ""},
    {"PriorityIsLow",              "Priority is low"},
    {"PriorityIsNormal",           "Priority is normal"},
    {"PriorityIsHigh",             "Priority is high"},
    {"InSpecialMailbox",           "Message is in mailbox"},
    {"NotInASpecialMailbox",       "Message is not in mailbox"},
    {"ContainsAttachments",        "Contains attachments"},
    {"AnyAttachment",              "Any attachment"},
    {"AttachmentType",             "Attachment type"},
};

constexpr shown_word expression_words[] = {
    {"AllVIPSenders",       "Sender is VIP"},
    {"MessageIsFlagged",    "Message is flagged"},
    {"MessageIsRead",       "Message is unread"},
    {"MessageWasRepliedTo", "Message was replied to"},
    {"local:///",           "On My Mac"},
};

constexpr shown_number flag_colors[] = {
    {0, "Red"},
    {1, "Orange"},
    {2, "Yellow"},
    {3, "Green"},
    {4, "Blue"},
    {5, "Purple"},
    {6, "Gray"},
};

// --- Date criteria ---------------------------------------------------------------------------------------------------

constexpr shown_word date_headers[] = {
    {"DateLastViewed", "Date Last Viewed"},
    {"DateReceived",   "Date Received"},
};

enum class date_expression
{
    as_stored,
    as_date,
    as_age
};

struct named_date
{
    const char *name;
    const char *qualifier;
    date_expression expression;
};

constexpr named_date named_dates[] = {
    {"today",      "is today",      date_expression::as_stored},
    {"yesterday",  "is yesterday",  date_expression::as_stored},
    {"this week",  "is this week",  date_expression::as_stored},
    {"last week",  "is last week",  date_expression::as_stored},
    {"is date",    "is date",       date_expression::as_date},
    {"is exactly", "is exactly",    date_expression::as_age},
};

constexpr shown_word ages_of_nothing[] = {
    {"1", "0 day ago"},
    {"2", "0 week ago"},
    {"3", "0 month ago"},
    {"4", "0 year ago"},
};

constexpr shown_word range_units[] = {
    {"1", " day"},
    {"2", " week"},
    {"3", " month"},
    {"4", " year"},
};

// clang-format on

// What a criterion and an entry of a date criterion have in common.
struct criterion
{
    explicit criterion(const property_list_value &stored)
        : header(stored_text("Header", stored)), account_url(stored_text("AccountURL", stored)),
          qualifier(stored_text("Qualifier", stored)), expression(stored_text("Expression", stored)),
          unit(stored_text("DateUnitType", stored))
    {
    }

    QString text() const
    {
        QString text;
        append_part(text, "Header: ", header);
        append_part(text, "Account URL: ", account_url);
        append_part(text, "Qualifier: ", qualifier);
        append_part(text, "Expression: ", expression);
        return text + QLatin1Char(';');
    }

    QString header;
    QString account_url;
    QString qualifier;
    QString expression;
    QString unit;
};

// A text that is no number reads as 0, as everywhere where an expression holds a number.
int number_of(const QString &expression)
{
    return expression.toInt();
}

// Seconds since 1970, whose fraction does not count. Dates before 1970 stand in UTC and in a form of their own.
QString convert_epoch_to_custom(const QString &text)
{
    const int seconds = number_of(text.left(text.indexOf(QLatin1Char('.'))));
    if (seconds == 0) {
        return QString();
    }
    const QLocale plain = QLocale::c(); // the machine's own may have digits of its own
    return seconds > 0
               ? plain.toString(QDateTime::fromSecsSinceEpoch(seconds), QStringLiteral("yyyy-MM-dd hh:mm:ss"))
               : plain.toString(QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC), QStringLiteral("yyyy/MM/dd HH:mm:ss"));
}

// Out: the word shown for a whole value; null for one that the table does not hold.
QString shown_for(const QString &value, table_rows<shown_word> words)
{
    for (const shown_word &word : words) {
        if (value == QLatin1String(word.stored)) {
            return QString::fromLatin1(word.shown);
        }
    }
    return QString();
}

// Logs a value of another kind than it should have.
bool is_kind_or_logged(bool is_kind, const operation_log &log, const char *message)
{
    if (!is_kind) {
        log(message);
        log("end with failure");
    }
    return is_kind;
}

void show_number(QString &expression, table_rows<shown_number> numbers)
{
    const QString shown = text_of_number(number_of(expression), numbers);
    if (!shown.isNull()) {
        expression = shown;
    }
}

void show_words(criterion &shown)
{
    shown.header = with_words_shown(shown.header, header_words);
    shown.qualifier = with_words_shown(shown.qualifier, qualifier_words);
    shown.expression = with_words_shown(shown.expression, expression_words);
}

QString text_of_criterion(criterion shown, const QString &user)
{
    shown.expression = with_home_expanded(shown.expression, user);
    shown.expression = shown.unit == QLatin1String(unit_is_date) ? convert_epoch_to_custom(shown.expression)
                                                                 : shown.expression + shown_for(shown.unit, age_units);
    if (shown.header == QLatin1String("Flag")) { // the expression alone tells what is asked
        if (shown.qualifier == QLatin1String("IsNotEqualTo") &&
            shown.expression == QLatin1String("MessageWasRepliedTo")) {
            shown.expression = QStringLiteral("Message was not replied to");
        }
        shown.qualifier.clear();
        shown.header.clear();
    }
    if (shown.header == QLatin1String("AttachmentType")) {
        shown.header = QStringLiteral("Attachment type");
        show_number(shown.expression, attachment_types);
    }
    show_words(shown);
    if (shown.header == QLatin1String("FlaggedStatus")) {
        shown.qualifier.clear();
        shown.header = QStringLiteral("Message has Flag");
        show_number(shown.expression, flag_colors);
    }
    return shown.text();
}

// Out: the text of a date with a name; empty when there is no such name.
QString text_of_named_date(criterion shown, const QString &name)
{
    for (const named_date &date : named_dates) {
        if (name != QLatin1String(date.name)) {
            continue;
        }
        shown.account_url.clear();
        shown.qualifier = QString::fromLatin1(date.qualifier);
        if (date.expression == date_expression::as_date) {
            shown.expression = convert_epoch_to_custom(shown.expression);
        } else if (date.expression == date_expression::as_age) {
            shown.expression = shown_for(shown.unit, ages_of_nothing);
        }
        return shown.text();
    }
    return QString();
}

// A range of ages is stored without its ends, and shown with them.
QString text_of_lower_end(const criterion &end)
{
    QString age = end.expression;
    if (end.unit == QLatin1String(unit_is_date)) {
        age = convert_epoch_to_custom(age);
    } else if (!age.isEmpty()) {
        age = QString::number(static_cast<qint64>(number_of(age)) + 1);
    }
    return QLatin1String("Header: ") + end.header +
           QLatin1String(";Qualifier: is in the range(or in between) ;Expression: ") + age + QLatin1String(" and ");
}

QString text_of_upper_end(const criterion &end)
{
    QString age = end.expression;
    if (end.unit == QLatin1String(unit_is_date)) {
        age = convert_epoch_to_custom(age);
    } else if (!age.isEmpty()) {
        const int number = number_of(age);
        age = QString::number(number > 0 ? number - 1 : number);
    }
    return age + shown_for(end.unit, range_units) + QLatin1String(";;");
}

constexpr const char *yes = "YES";
constexpr const char *no = "NO";

} // namespace

struct mail_macos::smart_mailbox_criteria
{
    QString includes_trash = QString::fromLatin1(yes);
    QString includes_sent = QString::fromLatin1(yes);
    joined_text conditions{mailboxes_log};
};

void mail_macos::xcode_extract_smartbox(const QString &file, const QString &user, const QString &destination_db,
                                        const QString &)
{
    static constexpr listed_rows mailboxes{
        mailboxes_log,    destination_open_failure, list_failure,   "end with failure",
        entries_of_array, insert_smart_mailbox,     insert_failure,
    };
    extract_listed_rows(
        mailboxes, file, user, destination_db,
        [&](const QString &, const property_list_value &mailbox) { return values_of_smart_mailbox(mailbox, user); });
}

std::optional<row_values> mail_macos::values_of_smart_mailbox(const property_list_value &mailbox,
                                                              const QString &user) const
{
    if (!is_kind_or_logged(mailbox.is_dictionary(), mailboxes_log, "dictionary blank")) {
        return std::nullopt;
    }
    const property_list_value stored_criteria = mailbox.object_for_key(QStringLiteral("MailboxCriteria"));
    if (!is_kind_or_logged(stored_criteria.is_array(), mailboxes_log, "array blank")) {
        return std::nullopt;
    }
    const QString must_satisfy_all = stored_yes_no("MailboxAllCriteriaMustBeSatisfied", mailbox);
    smart_mailbox_criteria criteria;
    read_smart_mailbox_criteria(stored_criteria, user, criteria);
    return row_values{
        {"mailbox_name", stored_text("MailboxName", mailbox)},
        {"mailbox_id", stored_text("MailboxID", mailbox)},
        {"include_messages_from_trash", criteria.includes_trash},
        {"include_messages_from_sent", criteria.includes_sent},
        {"met_condition", must_satisfy_all == QLatin1String(yes) ? QStringLiteral("all") : QStringLiteral("any")},
        {"conditions", without_ending(QStringLiteral("") + criteria.conditions.text(), ";;")},
    };
}

void mail_macos::read_smart_mailbox_criteria(const property_list_value &stored, const QString &user,
                                             smart_mailbox_criteria &criteria) const
{
    for (const property_list_value &top_level : stored.elements()) {
        if (cancel_extraction_bool || criteria.conditions.is_full()) {
            return;
        }
        if (!is_kind_or_logged(top_level.is_dictionary(), mailboxes_log, "dictionary blank")) {
            continue;
        }
        const QString header = stored_text("Header", top_level);
        if (header == QLatin1String("NotInTrashMailbox")) {
            criteria.includes_trash = QString::fromLatin1(no);
        } else if (header == QLatin1String("NotInASpecialMailbox")) {
            criteria.includes_sent = QString::fromLatin1(no);
        } else if (header == QLatin1String("Compound")) {
            const property_list_value nested = top_level.object_for_key(QStringLiteral("Criteria"));
            if (is_kind_or_logged(nested.is_array(), mailboxes_log, "array2 blank")) {
                append_nested_criteria(nested, user, criteria.conditions);
            }
        }
    }
}

void mail_macos::append_nested_criteria(const property_list_value &nested_criteria, const QString &user,
                                        joined_text &conditions) const
{
    for (const property_list_value &nested : nested_criteria.elements()) {
        if (cancel_extraction_bool || conditions.is_full()) {
            return;
        }
        if (!is_kind_or_logged(nested.is_dictionary(), mailboxes_log, "dictionary2 blank")) {
            continue;
        }
        const criterion stored(nested);
        conditions.append(stored.header == QLatin1String("Compound")
                              ? get_dates_from_nsarray(QStringLiteral("Criteria"), nested, stored_text("Name", nested))
                              : text_of_criterion(stored, user),
                          QString());
    }
}

QString mail_macos::get_dates_from_nsarray(const QString &key, const property_list_value &dictionary,
                                           const QString &name) const
{
    QString text;
    for (const property_list_value &entry : dictionary.object_for_key(key).elements()) {
        if (cancel_extraction_bool) {
            return QString();
        }
        if (!entry.is_dictionary()) {
            dates_log("[get_dates_from_nsarray] dictionary2 blank");
            dates_log("[get_dates_from_nsarray] end with failure");
            return QString(); // the ends of a range count behind its last entry only
        }
        criterion end(entry);
        end.header = shown_for(end.header, date_headers);
        const bool is_lower = end.qualifier == QLatin1String("IsGreaterThan");
        const bool is_upper = end.qualifier == QLatin1String("IsLessThan");
        if (end.header.isNull() || (!is_lower && !is_upper)) {
            continue;
        }
        if (!name.isEmpty()) {
            const QString named = is_lower ? text_of_named_date(end, name) : QString();
            if (!named.isEmpty()) {
                text = named;
                break;
            }
        } else {
            text += is_lower ? text_of_lower_end(end) : text_of_upper_end(end);
        }
    }
    return with_escapes_decoded(text);
}
