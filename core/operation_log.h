/// The log of one operation: it holds the operation's signature, which stands in each of its log lines. With the log
/// off a call costs one test and builds no text.
#pragma once

#include "core/plugin_static_function.h"

#include <QString>

/// The fixed texts of one kind of failure, kept beside the statement or file that they belong to. They are what readers
/// of the log look for: never composed, never "corrected".
struct failure_text
{
    const char *headline;              ///< none: no such line
    const char *error_label = nullptr; ///< in front of the error text; none: no such line
    const char *query_label = nullptr; ///< in front of the statement; none: no such line
    bool names_subject = true;         ///< whether the name of what failed follows the headline at once
    bool ends_with_subject = false;    ///< whether it stands in a last line of its own
};

class operation_log
{
public:
    explicit constexpr operation_log(const char *operation_signature) : signature(operation_signature) {}

    void operator()(const char *message) const
    {
        if (plugin_static_function::is_debug_on()) {
            write(message, QString());
        }
    }

    /// The value follows the message at once.
    void operator()(const char *message, const QString &value) const
    {
        if (plugin_static_function::is_debug_on()) {
            write(message, value);
        }
    }

    /// The lines of a failure: the headline with what failed, then error text and statement where the texts name them.
    void failure(const failure_text &texts, const QString &subject, const QString &error_text = QString(),
                 const char *statement = nullptr) const;

    /// The signature, which is also the name of the operation's connection and its name as a caller.
    QString signature_text() const;

private:
    void write(const char *message, const QString &value) const;

    const char *signature;
};
