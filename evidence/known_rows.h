/// Rows of a look-up table that stand once each, such as addresses.
#pragma once

#include "evidence/sqlite_file.h"

#include <QHash>
#include <QString>

namespace evidence {

/// Row ids by the key under which the table counts two texts as the same.
using known_rows = QHash<QString, qint64>;

/// Out: the row id that the key has, or that of the row inserted now.
template <typename... value_types>
qint64 row_id_of(known_rows &known, const QString &key, row_inserter &insert, const value_types &...values)
{
    const auto found = known.constFind(key);
    if (found != known.constEnd()) {
        return *found;
    }
    const qint64 row_id = insert(values...);
    known.insert(key, row_id);
    return row_id;
}

/// Out: the key of an address row. SQLite's NOCASE folds the 26 letters of ASCII only.
inline QString address_key(const QString &address, const QString &comment)
{
    QString folded = address;
    for (QChar &character : folded) {
        if (character >= QLatin1Char('A') && character <= QLatin1Char('Z')) {
            character = QChar(character.unicode() + ('a' - 'A'));
        }
    }
    return folded + QChar(QChar::Null) + comment;
}

/// Out: the key of a text that the table compares without the blanks at its end (RTRIM).
inline QString text_key(const QString &text)
{
    int length = text.size();
    while (length > 0 && text.at(length - 1) == QLatin1Char(' ')) {
        --length;
    }
    return text.left(length);
}

} // namespace evidence
