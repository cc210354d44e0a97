/// A list of evidence texts that becomes one column. Its length is bounded: one message can name an address of
/// megabytes a million times, one rule a criterion, and the row must not end the run.
#pragma once

#include "core/operation_log.h"

#include <QString>

class joined_text
{
public:
    explicit joined_text(const operation_log &operation) : log(operation) {}

    /// Adds a text with the separator behind it. What would go beyond the bound is left out, which is logged once.
    void append(const QString &text, const QString &separator)
    {
        if (joined.size() + text.size() <= longest) {
            joined += text + separator;
        } else if (!is_cut) {
            is_cut = true;
            log("list longer than 16 million characters -----FAILED-----, the rest is left out");
        }
    }

    /// Null when nothing was added.
    const QString &text() const { return joined; }
    /// Whether something was left out: whatever comes now is of no use.
    bool is_full() const { return is_cut; }

private:
    static constexpr int longest = 16000000;

    const operation_log &log;
    QString joined;
    bool is_cut = false;
};
