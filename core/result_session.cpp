#include "core/result_session.h"

namespace {

// A commit can fail where the disk is full or the file has been locked; the operation's rows are lost then.
constexpr failure_text commit_failure{"Destination Db commit -----FAILED-----", "ERROR :- "};

} // namespace

result_session::result_session(const operation_log &operation, const QString &database_path)
    : log(operation), path(database_path)
{
}

result_session::~result_session()
{
    finish();
}

bool result_session::open(const failure_text &texts)
{
    if (!connection.open_for_writing(path)) {
        log.failure(texts, path, connection.error_text());
        connection.close();
        return false;
    }
    connection.execute("BEGIN");
    return true;
}

void result_session::keep()
{
    commit();
    connection.execute("BEGIN");
}

void result_session::finish()
{
    if (!connection.is_open()) {
        return;
    }
    commit();
    connection.close();
}

void result_session::commit()
{
    if (!connection.execute("COMMIT")) {
        log.failure(commit_failure, path, connection.error_text());
    }
}
