// The record that takes the place of a log line where the log is enciphered.
#include "core/plugin_static_function.h"
#include "services/encryptor_string.h"

QString plugin_static_function::encrypt_string(const QString &text, const QString &)
{
    if (text.isEmpty()) {
        return QString();
    }
    encryptor_string encryptor; // a new one for each line: its seeding is where the random byte comes from
    return encryptor.encryptToString(text);
}
