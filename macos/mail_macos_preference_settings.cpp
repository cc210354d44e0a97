// The settings of the table preferences: which keys are read, their labels, and the words that stored values stand for.
// Those of the main window stand in mail_macos_viewer_state.cpp.
#include "core/plugin_static_function.h"
#include "macos/mail_macos.h"
#include "macos/preference_setting.h"
#include "services/property_list_readers.h"

namespace {

// clang-format off

constexpr shown_number poll_times[] = {
    {-1, "Automatically"},
    {0,  "Manually"},
    {60, "Every Hour"},
};
constexpr char other_poll_times[] = "Every %1 Minute";

constexpr shown_number notification_scopes[] = {
    {1, "inbox Only"},
    {2, "VIPs"},
    {3, "Contacts"},
    {4, "Mail Smart Box"},
    {5, "All Mailboxes"},
};

constexpr shown_number dock_badges[] = {
    {1, "inbox Only"},
    {2, "All Mailboxes"},
    {4, "Mail Smart Box"},
};

constexpr shown_word invitation_words[] = {
    {"YES", "Automatically"},
    {"NO",  "Never"},
};

constexpr shown_word message_formats[] = {
    {"Plain", "Plain Text"},
    {"MIME",  "Rich Text"},
};

constexpr shown_word spell_checks[] = {
    {"InlineSpellCheckingEnabled", "as i type"},
    {"SpellCheckingOnSendEnabled", "when i click send"},
    {"NoSpellCheckingEnabled",     "never"},
};

// "ReplyToSelf", "BccSelf".
constexpr struct
{
    const char *in_cc;
    const char *in_bcc;
    const char *shown;
} copies_to_self[] = {
    {"NO",  "NO",  "Message to self disable"},
    {"YES", "NO",  "CC to self enable"},
    {"NO",  "YES", "BCC to self enable"},
};

constexpr shown_word inverted[] = {
    {"YES", "NO"},
    {"NO",  "YES"},
};

constexpr shown_word original_message_words[] = {
    {"YES", "Include all of the original message text"},
    {"NO",  "Include selected text if any,otherwise include all text"},
};

constexpr shown_word swipe_actions[] = {
    {"YES", "Archive"},
    {"NO",  "Trash"},
};

constexpr shown_number snippet_lines[] = {
    {0, "None"},
    {1, "1 Line"},
};
constexpr char other_snippet_lines[] = "%1 Lines";

// The one number gives two rows.
constexpr shown_number junk_filters[] = {
    {0, "NO"},
    {1, "YES"},
    {2, "YES"},
    {3, "YES"},
};
constexpr shown_number junk_actions[] = {
    {1, "Mark as junk mail, but leave it in my inbox"},
    {2, "Move it to the Junk mailbox"},
    {3, "Perform custom actions(Click Advanced to configure)"},
};

constexpr shown_word always_yes[] = {
    {"NO", "YES"},
};

// clang-format on

QString in_home(const QString &value, const preference_context &context)
{
    return with_home_expanded(value, context.user);
}

QString in_round_brackets(const QString &value, const preference_context &)
{
    return with_round_brackets(value);
}

} // namespace

preference_settings mail_macos::settings_before_the_viewer_state()
{
    constexpr preference_reader string = &mail_macos::get_prefs_nsstring_values;
    constexpr preference_reader yes_no = &mail_macos::get_prefs_nsnumber_values;
    constexpr preference_reader list = &mail_macos::get_prefs_nsarray_values;
    constexpr preference_reader number = &mail_macos::get_prefs_decimal_number;
    constexpr preference_reader copies = &mail_macos::get_prefs_copies_to_self;
    // clang-format off
    static constexpr preference_setting settings[] = {
        {"PollTime",                          "Check For New Message",              number, as_numbers<poll_times, other_poll_times>},
        {"MailSound",                         "New Message Sound",                  string},
        {"PlayMailSounds",                    "Play sounds for other mail action",  yes_no},
        {"MailUserNotificationScope",         "New message notifications",          number, as_numbers<notification_scopes>},
        {"MailDockBadge",                     "Dock unread count",                  number, as_numbers<dock_badges>},
        {"AddInvitationsToICalAutomatically", "Add invitations to Calendar",        yes_no, as_words<invitation_words>},
        {"IndexDecryptedMessages",            "When searching all mailboxes, include result from Encypted Messages", yes_no},
        {"IndexTrash",                        "When searching all mailboxes, include result from Trash", yes_no},
        {"IndexJunk",                         "When searching all mailboxes, include result from Trash", yes_no}, // the same label
        {"NSNavLastRootDirectory",            "Last Root Directory",                string, in_home},
        {"SendFormat",                        "Message Format",                     string, as_words<message_formats>},
        {"SpellCheckingBehavior",             "Check Spelling",                     string, as_words<spell_checks>},
        {"ReplyToSelf",                       "Automatically",                      copies},
        {"SupressQuoteBarsInComposeWindows",  "Increase quote level",               yes_no, as_words<inverted>},
        {"ReplyQuotesOriginal",               "Quote the text of original message", yes_no, nullptr, "YES"},
        {"AlwaysIncludeOriginalMessage",      "When quoting text in reply or forword", yes_no, as_words<original_message_words>},
        {"EnableContactPhotos",               "Show contact photos in message list", yes_no},
        {"EnableToCcInMessageList",           "Show To/Cc label in message list",   yes_no},
        {"SwipeAction",                       "Swipe Left To",                      yes_no, as_words<swipe_actions>},
        {"ShouldShowUnreadMessagesInBold",    "Display unread message with bold font", yes_no},
        {"HighlightCurrentThread",            "Highlight messages with color when not grouped", yes_no},
        {"ConversationViewSpansMailboxes",    "Include related messages",           yes_no},
        {"ConversationViewMarkAllAsRead",     "Mark all messages as read when opening a conversation", yes_no},
        {"ConversationViewSortDescending",    "Show most recent message at the top", yes_no, nullptr, "YES"},
        {"HeaderDetail",                      "Show message headers",               string},
        {"CustomHeaders",                     "Custom headers name",                list},
        {"NumberOfSnippetLines",              "List Preview",                       number, as_numbers<snippet_lines, other_snippet_lines>},
        {"RichMessageList",                   "Use classic layout",                 yes_no, as_words<inverted>},
        {"NSFont",                            "Message font",                       string},
        {"NSFontSize",                        "Message font size",                  string},
        {"NSFixedPitchFont",                  "Fixed-width font",                   string},
        {"NSFixedPitchFontSize",              "Fixed-width font size",              string},
        {"AutoSelectFont",                    "Use fixed-width font for plain text messages", yes_no},
        {"ColorQuoterColorIncoming",          "Color quoted text",                  yes_no},
        {"JunkMailBehavior",                  "Enable junk mail filtering",         number, as_numbers<junk_filters>},
        {"JunkMailBehavior",                  "When junk mail arrives",             number, as_numbers<junk_actions>},
        {"junkMailTrustHeaders",              "Trust Junk mail headers in messages", yes_no, nullptr, "YES"},
        {"junkMailEvaluationAfterRules",      "Filter junk mail before applying my rules", yes_no, as_words<always_yes>, "NO"},
        {"IncludeOriginalAttachments",        "Include Original Attachments in Reply", yes_no},
        {"SendWindowsFriendlyAttachments",    "Always Send Window-Friendly Attachments", yes_no},
        {"AttachAtEnd",                       "Always Insert Attachment At End of Message", yes_no},
    };
    // clang-format on
    return settings;
}

preference_settings mail_macos::settings_behind_the_viewer_state()
{
    constexpr preference_reader string = &mail_macos::get_prefs_nsstring_values;
    constexpr preference_reader yes_no = &mail_macos::get_prefs_nsnumber_values;
    constexpr preference_reader list = &mail_macos::get_prefs_nsarray_values;
    constexpr preference_reader number = &mail_macos::get_prefs_decimal_number;
    constexpr preference_reader favorites = &mail_macos::get_prefs_favorite_values;
    constexpr preference_reader flags = &mail_macos::get_prefs_flag_names;
    // clang-format off
    static constexpr preference_setting settings[] = {
        {"Favorites",                      "Favorites Bar",                     favorites},
        {"ShowCcHeader",                   "Cc Address Field",                  yes_no},
        {"ShowBccHeader",                  "BCc Address Field",                 yes_no},
        {"ShowReplyToHeader",              "Reply-To Address Field",            yes_no},
        {"FlagNames",                      "Flag Names",                        flags},
        {"AccountOrdering",                "Account Display Order",             list, shown_account_order},
        {"LastAttachedDir",                "Last Attached Path",                string},
        {"NumberOfMessagesMarkedAsJunk",   "Number Of Messages Marked As Junk", number},
        {"SignaturePlacedAboveQuotedText", "Placed signature above quoted text", yes_no},
    };
    // clang-format on
    return settings;
}

preference_settings mail_macos::settings_of_composing()
{
    constexpr preference_reader string = &mail_macos::get_prefs_nsstring_values;
    constexpr preference_reader yes_no = &mail_macos::get_prefs_nsnumber_values;
    constexpr preference_reader texts = &mail_macos::get_prefs_untrimmed_texts;
    // clang-format off
    static constexpr preference_setting settings[] = {
        {"ExpandPrivateAliases",       "When sending to a group, show all member addresses", yes_no},
        {"AlertForNonmatchingDomains", "Mark address not ending with Enable",                yes_no},
        {"DomainForMatching",          "Mark address not ending with matching string",       texts},
        {"NewMessageFromAddress",      "Send new message from",                              string, in_round_brackets, "Account of selected mailbox"},
    };
    // clang-format on
    return settings;
}

// --- Readers of single settings --------------------------------------------------------------------------------------

QString mail_macos::get_prefs_decimal_number(const QString &key, const property_list_value &dictionary,
                                             const QString &label) const
{
    return plugin_static_function::get_nsnumber_key_and_values(key, dictionary, label);
}

QString mail_macos::get_prefs_copies_to_self(const QString &key, const property_list_value &dictionary,
                                             const QString &label) const
{
    const QString in_cc = value_of_row_text(get_prefs_nsnumber_values(key, dictionary, label));
    const QString in_bcc = value_of_row_text(get_prefs_nsnumber_values(QStringLiteral("BccSelf"), dictionary, label));
    for (const auto &copies : copies_to_self) {
        if (in_cc == QLatin1String(copies.in_cc) && in_bcc == QLatin1String(copies.in_bcc)) {
            return labelled(label, QString::fromLatin1(copies.shown));
        }
    }
    return QString();
}

QString mail_macos::get_prefs_untrimmed_texts(const QString &key, const property_list_value &dictionary,
                                              const QString &label) const
{
    const property_list_value array = dictionary.object_for_key(key);
    if (!array.is_array()) {
        return QString();
    }
    QStringList texts;
    for (const property_list_value &element : array.elements()) {
        if (cancel_extraction_bool) {
            return QString();
        }
        texts.append(element.text());
    }
    return labelled(label, texts.join(QLatin1Char(';')));
}
