#include "core/result_session.h"

namespace {

// A commit can fail where the disk is full or the file has been locked; the operation's rows are lost then.
constexpr failure_text commit_failure{"Destination Db commit -----FAILED-----", "ERROR :- "};

} // namespace

result_session::result_session(const operation_log &operation, const QString &database_path)
    : log(operation), connection(operation.connection_name(), database_path, database_connection::access::read_write)
{
}

result_session::~result_session()
{
    finish();
}

bool result_session::open(const failure_text &texts)
{
    if (!connection.open()) {
        log.failure(texts, connection.name(), connection.error_text());
        return false;
    }
    is_open = true;
    connection.handle().transaction();
    return true;
}

void result_session::finish()
{
    if (!is_open) {
        return;
    }
    is_open = false;
    if (!connection.handle().commit()) {
        log.failure(commit_failure, connection.name(), connection.error_text());
    }
    connection.close();
}
