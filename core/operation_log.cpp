#include "core/operation_log.h"

void operation_log::failure(const failure_text &texts, const QString &subject, const QString &error_text,
                            const char *statement) const
{
    if (!plugin_static_function::is_debug_on()) {
        return;
    }
    if (texts.headline) {
        write(texts.headline, texts.names_subject ? subject : QString());
    }
    if (texts.error_label) {
        write(texts.error_label, error_text);
    }
    if (texts.query_label) {
        write(texts.query_label, QString::fromUtf8(statement));
    }
    if (texts.ends_with_subject) {
        write("", subject);
    }
}

QString operation_log::signature_text() const
{
    return QString::fromLatin1(signature);
}

void operation_log::write(const char *message, const QString &value) const
{
    plugin_static_function::app_debug(QString::fromUtf8(message) + value, signature_text());
}
