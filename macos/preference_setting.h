/// A setting of the preference lists: the line of a table that tells where the row comes from, and how it is shown.
#pragma once

#include "macos/mailbox_names.h"
#include "macos/row_text.h"
#include "services/property_list.h"

#include <QString>

#include <atomic>

class mail_macos;

/// What the values of settings are shown with.
struct preference_context
{
    QString user;
    const std::atomic<bool> &is_cancelled;
    mailbox_names &names;
};

/// Out: the row text of a key, with the label; empty when there is none.
using preference_reader = QString (mail_macos::*)(const QString &key, const property_list_value &dictionary,
                                                  const QString &label) const;

/// Out: the value of the row for a stored one. A blank value adds no row.
using preference_view = QString (*)(const QString &value, const preference_context &context);

struct preference_setting
{
    const char *key;
    const char *label;
    preference_reader read;
    preference_view show = nullptr;           ///< none: the value stands as it is stored
    const char *value_when_missing = nullptr; ///< the row's value where the reader finds none; none: no such row
};

using preference_settings = table_rows<preference_setting>;

/// The view of a value that begins with one of the words.
template <const auto &words>
QString as_words(const QString &value, const preference_context &)
{
    return with_first_word_shown(value, words);
}

/// The view of a decimal number; one that the table lacks goes in place of "%1", if there is such a text.
template <const auto &numbers, const char *other_numbers = nullptr>
QString as_numbers(const QString &value, const preference_context &)
{
    const QString text = text_of_number(value.toLongLong(), numbers);
    return text.isNull() && other_numbers ? QString::fromLatin1(other_numbers).arg(value) : text;
}
