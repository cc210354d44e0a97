/// Rows that do not tell when, or in which order of the file system, they were made.
#pragma once

#include "tests/support/host_run.h"

#include <QDateTime>
#include <QRegularExpression>

#include <algorithm>

/// The rows of a table, as host_run gives them, in the order of their file paths, without their ids; a creation time of
/// a file that the test itself has made stands as "now".
inline QString settled_rows(const host_run &run, const QString &table)
{
    constexpr qint64 longest_test = 3600;
    QString text = run.rows(table);
    text.remove(QRegularExpression(QStringLiteral("  INT = \\d+\n")));
    const QRegularExpression created(QStringLiteral("  date_added = (\\d+)\n"));
    for (QRegularExpressionMatch match = created.match(text); match.hasMatch();
         match = created.match(text, match.capturedEnd())) {
        if (QDateTime::currentSecsSinceEpoch() - match.captured(1).toLongLong() < longest_test) {
            text.replace(match.capturedStart(), match.capturedLength(), QStringLiteral("  date_added = now\n"));
        }
    }
    QStringList rows = text.split(QRegularExpression(QStringLiteral("(^|(?<=\n))row\n")), Qt::SkipEmptyParts);
    const QRegularExpression path(QStringLiteral("  file_path = .*\n"));
    std::stable_sort(rows.begin(), rows.end(), [&path](const QString &left, const QString &right) {
        return path.match(left).captured() < path.match(right).captured();
    });
    for (QString &row : rows) {
        row.prepend(QLatin1String("row\n"));
    }
    return rows.join(QString());
}
