/// Which columns of the result tables hold times, and times as people read them.
#pragma once

#include <QString>
#include <QVariant>

/// Whether the result tables keep seconds since 1970 in columns of this name: one time, or several in one text with ";"
/// or, in used_dates, ";++::++;" between them.
bool is_time_column(const QString &name);

/// In: seconds since 1970 as stored. Out: "2020-01-06 10:40:00 UTC"; a null text where the value is no number of
/// seconds that lies in the years 1 to 9999. Of several times: "2020-01-06 10:40:00 UTC; 2020-01-07 08:00:00 UTC", with
/// "?" for a part that is no time; null where none is one.
QString utc_text(const QVariant &seconds);

/// The same for other tools: "2020-01-06T10:40:00Z" (ISO 8601). Of several the parts stand as in the value, with the
/// same text between them; one that is no time is empty.
QString utc_text_for_tools(const QVariant &seconds);
