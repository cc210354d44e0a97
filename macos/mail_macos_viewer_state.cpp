// Settings of the table preferences that describe the state of the main window: selected mailboxes, viewers, toolbar,
// favorites, flags, the order of the accounts.
#include "macos/mail_macos.h"
#include "macos/preference_setting.h"
#include "services/property_list_readers.h"

namespace {

constexpr shown_word marks_inside_values[] = {{":+:", ": "}};

// A labelled value as it stands inside the value of a row.
QString as_part(const QString &row_text)
{
    return with_words_shown(row_text, marks_inside_values);
}

QString without_colons(const QString &value, const preference_context &)
{
    return QString(value).remove(QLatin1Char(':'));
}

// The entries of a list of URLs, the last one's end cut.
QString entries_of(const QString &urls, const preference_context &context,
                   QString (mailbox_names::*entry_of)(const QString &url))
{
    QString entries;
    for (const QStringRef &url : urls.splitRef(QLatin1Char(';'))) {
        if (context.is_cancelled) {
            return QString();
        }
        entries += (context.names.*entry_of)(url.toString());
    }
    return without_ending(entries, ";;");
}

QString selected_mailboxes(const QString &urls, const preference_context &context)
{
    return entries_of(with_escapes_decoded(urls), context, &mailbox_names::entry_of_mailbox);
}

// The entries of the favorites bar. Behind each entry the escapes of the whole text are decoded anew, so that an escape
// may come out of another one.
class favorites_text
{
public:
    void append(const QString &entry)
    {
        text += entry;
        decoded_size += text.size() - settled_size;
        if (decoded_size > most_decoded) {
            return;
        }
        const QString decoded = with_escapes_decoded(text.mid(settled_size));
        text.truncate(settled_size);
        text += decoded;
        // What stands in front of the first "%" no later decoding changes.
        const int first_escape = text.indexOf(QLatin1Char('%'), settled_size);
        settled_size = first_escape < 0 ? text.size() : first_escape;
    }
    /// Whether so many escapes came out of escapes that the last entries stand undecoded.
    bool is_partly_decoded() const { return decoded_size > most_decoded; }
    const QString &so_far() const { return text; }

private:
    static constexpr qint64 most_decoded = 100000000; // characters: less than a second's work

    QString text;
    int settled_size = 0;
    qint64 decoded_size = 0;
};

QString entry_of_favorite(const property_list_value &favorite)
{
    QString entry;
    const auto append_name = [&](const char *key, const char *label) {
        const property_list_value name = favorite.object_for_key(key);
        if (name.is_string()) {
            entry += QLatin1String(label) + name.text().trimmed() + QLatin1Char(';');
        }
    };
    append_name("MailboxUidPersistentIdentifier", "Mailbox Identifier: ");
    append_name("MailboxUidName", "Mailbox UID Name: ");
    const QString selection = stored_yes_no("IsPrefferedSelection", favorite);
    if (!selection.isNull()) {
        entry += QLatin1String("Is Preffered Selection: ") + selection + QLatin1Char(';');
    }
    const property_list_value part = favorite.object_for_key("SelectedSubMailboxPersistentIdentifier");
    if (part.is_string()) {
        const QString label = QStringLiteral("Selected Sub Mailbox Identifier");
        entry += as_part(labelled(label, part.text().trimmed())).trimmed() + QLatin1Char(';');
    }
    return entry + QLatin1Char(';');
}

} // namespace

QString mail_macos::shown_account_order(const QString &urls, const preference_context &context)
{
    return entries_of(urls, context, &mailbox_names::entry_of_account);
}

preference_settings mail_macos::settings_of_viewer_state()
{
    constexpr preference_reader string = &mail_macos::get_prefs_nsstring_values;
    constexpr preference_reader yes_no = &mail_macos::get_prefs_nsnumber_values;
    constexpr preference_reader list = &mail_macos::get_prefs_nsarray_values;
    // clang-format off
    static constexpr preference_setting settings[] = {
        {"SelectedMailboxes",   "Selected Mailbox",      list,   selected_mailboxes},
        {"ToolbarIsHidden",     "Toolbar Is Hidden",     yes_no},
        {"SortedDescending",    "Sorting Descending",    yes_no},
        {"SortOrder",           "Sort By",               string, as_words<sort_order_words>},
        {"FavoritesBarVisible", "Favorites Bar Visible", yes_no},
    };
    // clang-format on
    return settings;
}

// Two of the labels are the same.
preference_settings mail_macos::settings_of_viewers()
{
    constexpr preference_reader viewer = &mail_macos::get_prefs_all_viewerattributes;
    // clang-format off
    static constexpr preference_setting settings[] = {
        {"ArchiveViewerAttributes",      "Archive Viewer Attributes",       viewer},
        {"InboxViewerAttributes",        "Inbox Viewer Attributes",         viewer},
        {"FlagsViewerAttributes",        "Flags Viewer Attributes",         viewer},
        {"TrashViewerAttributes",        "Trash Viewer Attributes",         viewer},
        {"VIPSendersViewerAttributes",   "VIP Sender Viewer Attributes",    viewer},
        {"DraftsViewerAttributes",       "Drafts Viewer Attributes",        viewer},
        {"JunkViewerAttributes",         "Junk Viewer Attributes",          viewer},
        {"SentMessagesViewerAttributes", "Sent Messages Viewer Attributes", viewer},
        {"OutboxViewerAttributes",       "Sent Messages Viewer Attributes", viewer},
    };
    // clang-format on
    return settings;
}

preference_settings mail_macos::settings_of_toolbar()
{
    constexpr preference_reader list = &mail_macos::get_prefs_nsarray_values;
    // clang-format off
    static constexpr preference_setting settings[] = {
        {"TB Item Identifiers",         "Toolbar Buttons",         list, without_colons},
        {"TB Default Item Identifiers", "Default Toolbar Buttons", list, without_colons},
    };
    // clang-format on
    return settings;
}

QString mail_macos::get_prefs_all_viewerattributes(const QString &key, const property_list_value &dictionary,
                                                   const QString &label) const
{
    const property_list_value viewer = dictionary.object_for_key(key);
    if (!viewer.is_dictionary()) {
        return QString();
    }
    const QString direction =
        get_prefs_nsstring_values(QStringLiteral("SortedDescending"), viewer, QStringLiteral("Sorting Descending"));
    const QString order = get_prefs_nsstring_values(QStringLiteral("SortOrder"), viewer, QStringLiteral("Sort By"));
    QString attributes;
    append_part(attributes, "", as_part(direction));
    append_part(attributes, "", as_part(with_value_shown(order, sort_order_words)));
    return labelled(label, without_ending(attributes, ";"));
}

QString mail_macos::get_prefs_favorite_values(const QString &key, const property_list_value &dictionary,
                                              const QString &label) const
{
    const property_list_value favorites = dictionary.object_for_key(key);
    if (!favorites.is_array()) {
        return QString();
    }
    favorites_text text;
    for (const property_list_value &favorite : favorites.elements()) {
        if (cancel_extraction_bool) {
            return QString();
        }
        if (favorite.is_dictionary()) {
            text.append(entry_of_favorite(favorite));
        }
    }
    if (text.is_partly_decoded()) {
        static constexpr operation_log log{
            "QString mail_macos::get_prefs_favorite_values(QString, property_list_value, QString)"};
        log("escapes within escapes -----FAILED-----, the last favorites are left undecoded");
    }
    return labelled(label, without_ending(text.so_far(), ";;"));
}

QString mail_macos::get_prefs_flag_names(const QString &key, const property_list_value &dictionary,
                                         const QString &label) const
{
    const property_list_value flags = dictionary.object_for_key(key);
    if (!flags.is_dictionary()) {
        return QString();
    }
    QString names;
    for (const auto &[position, name] : flags.entries()) {
        if (cancel_extraction_bool) {
            return QString();
        }
        if (name.is_string()) {
            names += as_part(labelled(QLatin1String("Position ") + position, name.text().trimmed()));
        }
        names += QLatin1Char(';');
    }
    return labelled(label, without_ending(names, ";"));
}
