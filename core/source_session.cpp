#include "core/source_session.h"

#include <QSqlError>
#include <QSqlRecord>
#include <QVariant>

#include <algorithm>
#include <cmath>

namespace {

QString text_of(const QVariant &value)
{
    return value.userType() == QMetaType::Double ? real_as_database_text(value.toDouble()) : value.toString();
}

} // namespace

QString real_as_database_text(double value)
{
    if (std::isinf(value)) {
        return value > 0 ? QStringLiteral("Inf") : QStringLiteral("-Inf");
    }
    if (value == 0.0) {
        return QStringLiteral("0.0"); // a negative zero has no sign there
    }
    QString text = QString::number(value, 'g', 15);
    const int exponent_at = text.indexOf(QLatin1Char('e'));
    const int mantissa_end = exponent_at < 0 ? text.size() : exponent_at;
    if (text.indexOf(QLatin1Char('.')) < 0) {
        text.insert(mantissa_end, QLatin1String(".0"));
    }
    return text;
}

source_session::source_session(const operation_log &operation, const char *name_suffix, const QString &copy_path)
    : log(operation),
      connection(operation.connection_name(name_suffix), copy_path, database_connection::access::read_only)
{
}

bool source_session::open(const failure_text &texts)
{
    if (connection.open()) {
        return true;
    }
    log.failure(texts, connection.name(), connection.error_text());
    return false;
}

source_query::source_query(source_session &source, const operation_log &operation, const char *statement_text,
                           const failure_text &failure_texts)
    : session(source), log(operation), statement(statement_text), texts(failure_texts), query(source.database())
{
    query.setForwardOnly(true);
}

bool source_query::prepare()
{
    if (!is_prepared && prepare_error.isNull()) {
        is_prepared = query.prepare(QString::fromUtf8(statement));
        if (!is_prepared) {
            prepare_error = query.lastError().text();
        }
    }
    return is_prepared;
}

bool source_query::execute(std::initializer_list<QString> values)
{
    if (!prepare()) {
        log_failure(prepare_error);
        return false;
    }
    int position = 0;
    for (const QString &value : values) {
        query.bindValue(position++, value);
    }
    if (!query.exec()) {
        log_failure(query.lastError().text());
        return false;
    }
    if (columns.empty()) {
        const QSqlRecord record = query.record();
        for (int i = 0; i < record.count(); ++i) {
            columns.push_back(record.fieldName(i).toUtf8());
        }
    }
    return true;
}

bool source_query::next()
{
    if (query.next()) {
        return true;
    }
    // A damaged page in the middle of a table ends the rows as well; that must not look like their end.
    if (query.lastError().isValid()) {
        log_failure(query.lastError().text());
    }
    return false;
}

QString source_query::text(const char *column) const
{
    const auto found = std::find_if(columns.begin(), columns.end(), [column](const QByteArray &name) {
        return qstricmp(name.constData(), column) == 0; // SQLite takes column names in any case
    });
    return found == columns.end() ? QString() : text_of(query.value(static_cast<int>(found - columns.begin())));
}

void source_query::log_failure(const QString &error_text) const
{
    log.failure(texts, session.database_name(), error_text, statement);
}
