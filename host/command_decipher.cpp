#include "host/command_decipher.h"

#include "host/command_line.h"
#include "host/log_reader.h"
#include "host/terminal.h"

#include <QFileInfo>

int command_decipher(const QStringList &arguments)
{
    const command_arguments given{QStringLiteral("decipher"), arguments, {}, {QStringLiteral("LOG")}, 1};
    const QString path = given.at(0);
    if (!QFileInfo(path).isFile()) {
        throw unusable_input{QStringLiteral("there is no log file \"%1\"").arg(path)};
    }
    log_reader log(path, log_reader::form::enciphered);
    if (!log.open()) {
        throw unusable_input{QStringLiteral("the log \"%1\" cannot be read: %2").arg(path, log.error_text())};
    }
    int code = exit_done;
    while (log.next()) {
        if (!log.has_met_records()) {
            throw unusable_input{QStringLiteral("\"%1\" is not an enciphered log: it holds no record").arg(path)};
        }
        if (log.is_readable()) {
            print_line(stdout_is_terminal() ? escaped_for_terminal(log.line()) : log.line());
        } else {
            print_line(QStringLiteral("[record %1 does not decipher: it is damaged or cut off]").arg(log.number()));
            code = exit_done_with_failures;
        }
    }
    return code;
}
