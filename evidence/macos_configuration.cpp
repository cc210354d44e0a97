#include "evidence/macos_configuration.h"

#include "evidence/files.h"
#include "evidence/sample_text.h"

#include <QDateTime>

namespace evidence {

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

// clang-format off

struct sample_criterion
{
    const char *header;
    const char *qualifier; ///< null: the key is absent, which means "contains"
    const char *expression;
    const char *unit;      ///< null: absent
};

constexpr std::array<sample_criterion, 9> rule_criteria = {{
    {"From",                     nullptr,          "newsletter@example.com", nullptr},
    {"Subject",                  "BeginsWith",     "Rechnung",               nullptr},
    {"AnyRecipient",             "DoesNotContain", "anna@example.org",       nullptr},
    {"DateSent",                 "IsGreaterThan",  "30",                     "0"},
    {"Body",                     nullptr,          "Straße",                 nullptr},
    {"SenderIsNotInAddressBook", nullptr,          "",                       nullptr},
    {"SenderIsMemberOfVIPSenders", "IsEqualTo",    "AllVIPSenders",          nullptr},
    {"IsJunkMail",               nullptr,          "",                       nullptr},
    {"PriorityIsHigh",           nullptr,          "",                       nullptr},
}};

constexpr std::array<const char *, 7> rule_names = {
    "Newsletter", "Rechnungen 2014", "News%20From%20Work", "会議", "Личное", "Alte Post → Archiv", "VIP"};

constexpr std::array<sample_criterion, 9> smart_criteria = {{
    {"From",           nullptr,         "ben@example.org",     nullptr},
    {"Subject",        "DoesNotContain","Sale",                nullptr},
    {"FlaggedStatus",  "IsEqualTo",     "1",                   nullptr},
    {"Flag",           "IsEqualTo",     "MessageIsRead",       nullptr},
    {"Flag",           "IsNotEqualTo",  "MessageWasRepliedTo", nullptr},
    {"AttachmentType", "IsEqualTo",     "7",                   nullptr},
    {"DateReceived",   "IsLessThan",    "2",                   "2"},
    {"DateReceived",   "IsGreaterThan", "1404165600",          "0"},
    {"Mailbox",        "IsEqualTo",     "local:///Notes",      nullptr},
}};

constexpr std::array<const char *, 5> date_names = {"today", "yesterday", "this week", "last week", ""};

constexpr std::array<const char *, 6> smart_mailbox_names = {
    "Ungelesen", "Diese Woche", "Mit PDF", "Projet été", "Заказы", "フラグ付き"};

constexpr std::array<const char *, 4> closings = {"Mit freundlichen Grüßen", "Kind regards", "Cordialement", "よろしくお願いします"};

// clang-format on

QVariant dictionary_of(const sample_criterion &criterion, sample_random &random)
{
    property_list_dictionary dictionary{{"CriterionUniqueId", uuid_of(random)},
                                        {"Expression", text(criterion.expression)},
                                        {"Header", text(criterion.header)}};
    if (criterion.qualifier != nullptr) {
        dictionary.append({"Qualifier", text(criterion.qualifier)});
    }
    if (criterion.unit != nullptr) {
        dictionary.append({"DateUnitType", text(criterion.unit)});
    }
    return dictionary;
}

template <size_t count>
QVariantList some_criteria(const std::array<sample_criterion, count> &criteria, sample_random &random)
{
    QVariantList chosen;
    for (uint64_t left = 1 + random.below(3); left > 0; --left) {
        chosen.append(dictionary_of(random.pick(criteria), random));
    }
    return chosen;
}

QString yes_no(sample_random &random)
{
    return random.one_in(2) ? QStringLiteral("YES") : QStringLiteral("NO");
}

/// Both ends of a date, as the mail application writes them; a name says which date it is.
QVariant date_criterion(sample_random &random)
{
    const QString name = text(random.pick(date_names));
    const sample_criterion from = {"DateReceived", "IsGreaterThan", "2", "1"};
    const sample_criterion to = {"DateReceived", "IsLessThan", "8", "1"};
    return property_list_dictionary{{"AllCriteriaMustBeSatisfied", true},
                                    {"Criteria", QVariantList{dictionary_of(from, random), dictionary_of(to, random)}},
                                    {"CriterionUniqueId", uuid_of(random)},
                                    {"Header", text("Compound")},
                                    {"Name", name}};
}

QByteArray mail_signature(sample_random &random, const QString &uid, const QString &closing)
{
    const bool is_quoted_printable = random.one_in(3);
    QString body = QStringLiteral("<body style=\"word-wrap: break-word;\"><div>%1,<br>%2</div>")
                       .arg(closing, person_of(random.below(1000)).name.toHtmlEscaped());
    for (uint64_t left = 3 + random.below(6); left > 0; --left) {
        body += QStringLiteral("\n<div><b>%1</b> <font color=\"#666666\">%2</font></div>")
                    .arg(subject_of(random).toHtmlEscaped(), text_of(random, 60).toHtmlEscaped());
    }
    body += QLatin1String("\n</body>");
    if (is_quoted_printable) {
        body.replace(QLatin1String("</b> "), QLatin1String("</b> =\n")); // a soft line break
    }
    const QString head = QStringLiteral("Content-Transfer-Encoding: %1\nContent-Type: text/html;\n\tcharset=utf-8\n"
                                        "Message-Id: <%2>\nMime-Version: 1.0 (Mac OS X Mail 8.2)\n\n")
                             .arg(is_quoted_printable ? text("quoted-printable") : text("7bit"), uid);
    return (head + body + QLatin1Char('\n')).toUtf8();
}

} // namespace

macos_sample_account sample_account(int number, sample_random &random)
{
    const sample_person person = person_of(static_cast<uint64_t>(number));
    const bool is_exchange = number % 5 == 4;
    return {is_exchange ? text("ews") : text("imap"), uuid_of(random), person.address,
            (is_exchange ? text("Exchange ") : text("Konto ")) + QString::number(number + 1)};
}

macos_configuration::macos_configuration(macos_mail_tree &tree, QString user, QVector<macos_sample_account> accounts,
                                         sample_random &random)
    : tree(tree), user(std::move(user)), accounts(std::move(accounts)), random(random)
{
}

QString macos_configuration::account_url(const macos_sample_account &account) const
{
    return account.scheme + QLatin1String("://") + account.identifier + QLatin1Char('/');
}

QString macos_configuration::list_path(int generation, const char *name) const
{
    return tree.store_folder(user, generation) + QLatin1String("/MailData/") + QLatin1String(name);
}

void macos_configuration::write_lists(int generation, const macos_configuration_size &size)
{
    write_rules(generation, size.rules);
    write_smart_mailboxes(generation, size.smart_mailboxes);
    write_vips(generation, size.vips);
    write_signatures(generation, size.signatures);
}

void macos_configuration::write_rules(int generation, int count)
{
    QVariantList rules;
    for (int number = 0; number < count; ++number) {
        property_list_dictionary rule{
            {"AllCriteriaMustBeSatisfied", random.one_in(2)},
            {"AutoResponseType", 0},
            {"Criteria", some_criteria(rule_criteria, random)},
            {"Deletes", yes_no(random)},
            {"FlagColor", static_cast<int>(random.below(7))},
            {"HighlightTextUsingColor", yes_no(random)},
            {"MarkFlagged", yes_no(random)},
            {"MarkRead", yes_no(random)},
            {"RuleId", uuid_of(random)},
            {"RuleName", text(random.pick(rule_names))},
            {"SendNotification", yes_no(random)},
            {"ShouldCopyMessage", yes_no(random)},
            {"ShouldTransferMessage", text("YES")},
            {"StopEvaluatingRules", yes_no(random)},
            {"TimeStamp", static_cast<qint64>(430000000 + number)},
        };
        if (random.one_in(2)) {
            rule.append({"Mailbox", text("~/Library/Mail/V5/Mailboxes/Archiv.mbox")});
            rule.append({"MailboxURL", text("local:///Alte%20Post")});
        }
        if (random.one_in(4)) {
            const sample_person person = person_of(random.below(500));
            rule.append({"ForwardRecipients",
                         QStringList{person.name + QLatin1String(" <") + person.address + QLatin1Char('>')}});
            rule.append({"ResponseMessage", text_of(random, 80)});
        }
        rules.append(rule);
    }
    write_property_list_file(list_path(generation, "SyncedRules.plist"), rules, property_list_form::binary);
}

void macos_configuration::write_smart_mailboxes(int generation, int count)
{
    QVariantList mailboxes;
    for (int number = 0; number < count; ++number) {
        QVariantList nested = some_criteria(smart_criteria, random);
        if (random.one_in(3)) {
            nested.append(date_criterion(random));
        }
        QVariantList criteria;
        for (const char *exclusion : {"NotInTrashMailbox", "NotInASpecialMailbox"}) {
            if (random.one_in(2)) {
                criteria.append(
                    property_list_dictionary{{"CriterionUniqueId", uuid_of(random)}, {"Header", text(exclusion)}});
            }
        }
        criteria.append(property_list_dictionary{{"AllCriteriaMustBeSatisfied", true},
                                                 {"Criteria", nested},
                                                 {"Header", text("Compound")},
                                                 {"Name", text("user criteria")}});
        smart_mailbox_ids.append(uuid_of(random));
        mailboxes.append(property_list_dictionary{{"MailboxAllCriteriaMustBeSatisfied", random.one_in(2)},
                                                  {"MailboxChildren", QVariantList{}},
                                                  {"MailboxCriteria", criteria},
                                                  {"MailboxID", smart_mailbox_ids.last()},
                                                  {"MailboxName", text(random.pick(smart_mailbox_names))},
                                                  {"MailboxType", 7}});
    }
    write_property_list_file(list_path(generation, "SyncedSmartMailboxes.plist"), mailboxes,
                             property_list_form::binary);
}

void macos_configuration::write_vips(int generation, int count)
{
    property_list_dictionary vips;
    for (int number = 0; number < count; ++number) {
        const sample_person person = person_of(static_cast<uint64_t>(number) * 3);
        const QStringList addresses =
            number % 4 == 0 ? QStringList{person.address, text("second@example.org")} : QStringList{person.address};
        if (generation >= 7) {
            vips.append(
                {uuid_of(random), property_list_dictionary{{"EmailAddresses", addresses}, {"Name", person.name}}});
            continue;
        }
        property_list_dictionary vip{{"Addresses", addresses},
                                     {"MailboxUnreadCount", static_cast<int>(random.below(40))},
                                     {"Name", person.name}};
        if (!random.one_in(4)) {
            vip.append({"UserInfo", property_list_dictionary{{"MailboxID", uuid_of(random)},
                                                             {"SortOrder", text("received-date")},
                                                             {"SortedDescending", text("YES")}}});
        }
        vips.append({uuid_of(random), vip});
    }
    const QVariant root = generation >= 7 ? QVariant(vips) : property_list_dictionary{{"Senders", vips}};
    write_property_list_file(list_path(generation, "VIPs.plist"), root, property_list_form::binary);
}

void macos_configuration::write_signatures(int generation, int count)
{
    const QString folder = tree.store_folder(user, generation) + QLatin1String("/MailData/Signatures/");
    make_folder(folder);
    QVariantList signatures;
    QVector<QStringList> uids_of_account(accounts.size());
    for (int number = 0; number < count; ++number) {
        const QString uid = uuid_of(random);
        const QString closing = text(random.pick(closings));
        signatures.append(property_list_dictionary{
            {"SignatureIsRich", true}, {"SignatureName", closing}, {"SignatureUniqueId", uid}});
        write_file(folder + uid + QLatin1String(".mailsignature"), mail_signature(random, uid, closing));
        if (!accounts.isEmpty()) {
            uids_of_account[number % accounts.size()].append(uid);
        }
        signature_uids.append(uid);
    }
    property_list_dictionary map;
    for (int account = 0; account < accounts.size(); ++account) {
        map.append({accounts.at(account).identifier,
                    property_list_dictionary{{"AccountURL", account_url(accounts.at(account))},
                                             {"Signatures", uids_of_account.at(account)}}});
    }
    write_property_list_file(folder + QLatin1String("AllSignatures.plist"), signatures, property_list_form::binary);
    write_property_list_file(folder + QLatin1String("AccountsMap.plist"), map, property_list_form::xml);
}

void macos_configuration::write_accounts(int generation)
{
    if (generation == 2) {
        write_account_list();
    } else {
        write_account_database(generation);
    }
}

void macos_configuration::write_account_list()
{
    QVariantList receiving;
    QVariantList delivery;
    for (const macos_sample_account &account : accounts) {
        const QString host = QLatin1String("mail.") + account.user_name.section(QLatin1Char('@'), 1);
        receiving.append(property_list_dictionary{
            {"AccountName", account.description},
            {"AccountPath", QString(QLatin1String("~/Library/Mail/V2/") + account.identifier)},
            {"AccountType", account.scheme == QLatin1String("ews") ? text("EWSAccount") : text("IMAPAccount")},
            {"DateOfLastSync", QDateTime::fromSecsSinceEpoch(1404200000, Qt::UTC)},
            {"DraftsMailboxName", text("Drafts")},
            {"EmailAddresses", QStringList{account.user_name}},
            {"FullUserName", user},
            {"Hostname", host},
            {"PortNumber", text("993")},
            {"SMTPIdentifier", QString(host + QLatin1Char(':') + account.user_name)},
            {"SentMessagesMailboxName", text("Sent Messages")},
            {"ServerID", property_list_dictionary{{"name", text("Dovecot")}, {"vendor", text("Example")}}},
            {"TrashMailboxName", text("Deleted Messages")},
            {"Username", account.user_name},
            {"uniqueId", uuid_of(random)},
        });
        delivery.append(property_list_dictionary{{"AccountName", account.description},
                                                 {"AccountType", text("SMTPAccount")},
                                                 {"Hostname", host},
                                                 {"PortNumber", 587},
                                                 {"Username", account.user_name}});
    }
    delivery.append(property_list_dictionary{{"AccountName", text("Altes Konto")},
                                             {"AccountType", text("SMTPAccount")},
                                             {"Hostname", text("smtp.example.net")},
                                             {"PortNumber", text("25")},
                                             {"Username", text("left.behind@example.net")},
                                             {"uniqueId", uuid_of(random)}});
    const property_list_dictionary root{{"DeliveryAccounts", delivery}, {"MailAccounts", receiving}};
    write_property_list_file(list_path(2, "Accounts.plist"), root, property_list_form::xml);
}

/// Each account is followed by the one that sends its mails, its child.
void macos_configuration::write_account_database(int generation)
{
    accounts_database &database = tree.accounts(user, generation == 3 ? 3 : 4);
    const qint64 imap = database.add_account_type(text("com.apple.account.IMAP"), text("IMAP"));
    const qint64 smtp = database.add_account_type(text("com.apple.account.SMTP"), text("SMTP"));
    for (const macos_sample_account &account : accounts) {
        account_row row;
        row.type = imap;
        row.date = 425000000.25;
        row.description = account.description;
        row.identifier = account.identifier;
        row.owning_bundle_id = text("com.apple.mail");
        row.user_name = account.user_name;
        account_row child;
        child.parent = database.add_account(row);
        child.type = smtp;
        child.identifier = uuid_of(random);
        database.add_account(child);
        if (!account.identifier.contains(QLatin1Char('@'))) { // the others have folders of another name
            make_folder(tree.store_folder(user, generation) + QLatin1Char('/') + account.identifier);
        }
    }
}

void macos_configuration::write_preferences()
{
    QStringList ordering;
    property_list_dictionary selected;
    property_list_dictionary methods;
    for (int number = 0; number < accounts.size(); ++number) {
        const macos_sample_account &account = accounts.at(number);
        ordering.append(account_url(account));
        if (number < signature_uids.size()) {
            selected.append({account.identifier, signature_uids.at(number)});
            methods.append({account.identifier, number % 2 == 0 ? text("Sequential") : text("Randomize")});
        }
    }
    ordering.append(text("local:///"));
    QStringList selected_mailboxes{text("local:///Auf%20meinem%20Mac")};
    if (!accounts.isEmpty()) {
        selected_mailboxes.prepend(account_url(accounts.first()) + QLatin1String("INBOX"));
    }
    if (!smart_mailbox_ids.isEmpty()) {
        selected_mailboxes.append(QLatin1String("smartmailbox://") + smart_mailbox_ids.first());
    }
    const property_list_dictionary viewer{{"SortOrder", text("received-date")}, {"SortedDescending", text("YES")}};
    const property_list_dictionary preferences{
        {"AccountOrdering", ordering},
        {"AddInvitationsToICalAutomatically", true},
        {"BccSelf", false},
        {"ConversationViewMarkAllAsRead", true},
        {"CustomHeaders", QStringList{text("X-Mailer"), text("X-Spam-Status")}},
        {"DefaultViewerState", property_list_dictionary{{"FavoritesBarVisible", true},
                                                        {"SelectedMailboxes", selected_mailboxes},
                                                        {"SortOrder", text("from")},
                                                        {"SortedDescending", true},
                                                        {"ToolbarIsHidden", false}}},
        {"Favorites", QVariantList{property_list_dictionary{{"IsPrefferedSelection", true},
                                                            {"MailboxUidName", text("Eingang")},
                                                            {"MailboxUidPersistentIdentifier", text("inbox")}}}},
        {"FlagNames", property_list_dictionary{{"0", text("Dringend")}, {"4", text("Später")}}},
        {"InboxViewerAttributes", viewer},
        {"JunkMailBehavior", 2},
        {"LastAttachedDir", text("~/Documents")},
        {"MailDockBadge", 1},
        {"MailSound", text("Sosumi")},
        {"MailUserNotificationScope", 3},
        {"NSFont", text("Helvetica")},
        {"NSFontSize", text("13")},
        {"NSNavLastRootDirectory", text("~/Downloads")},
        {"NSToolbar Configuration MainWindow",
         property_list_dictionary{{"TB Item Identifiers", QStringList{text("checkNewMail:"), text("showCompose:")}}}},
        {"NumberOfSnippetLines", 2},
        {"PollTime", 5},
        {"ReplyToSelf", true},
        {"SendFormat", text("MIME")},
        {"SentMessagesViewerAttributes", viewer},
        {"SignatureSelectionMethods", methods},
        {"SignaturesSelected", selected},
        {"SpellCheckingBehavior", text("InlineSpellCheckingEnabled")},
    };
    write_property_list_file(tree.home_of(user) +
                                 QLatin1String("/Library/Containers/com.apple.mail/Data/Library/Preferences/"
                                               "com.apple.mail.plist"),
                             preferences, property_list_form::binary);
    write_shared_preferences();
}

void macos_configuration::write_shared_preferences()
{
    const property_list_dictionary shared{
        {"AlertForNonmatchingDomains", true},
        {"DomainForMatching", QStringList{text("@example.org"), text("@example.com")}},
        {"ExpandPrivateAliases", false},
        {"NewMessageFromAddress", user + QLatin1String(" <") + user + QLatin1String("@example.org>")}};
    write_property_list_file(tree.home_of(user) + QLatin1String("/Library/Preferences/com.apple.mail-shared.plist"),
                             shared, property_list_form::binary);
}

} // namespace evidence
