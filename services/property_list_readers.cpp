#include "services/property_list_readers.h"

#include <QStringList>

QString labelled(const QString &label, const QString &value)
{
    return label + QLatin1String(":+:") + value;
}

QString labelled_texts_of_array(const property_list_value &array, const QString &label,
                                const std::atomic<bool> &cancel_flag)
{
    if (!array.is_array()) {
        return QString();
    }
    QStringList texts;
    for (const property_list_value &element : array.elements()) {
        if (cancel_flag) {
            return QString();
        }
        texts.append(element.text().trimmed());
    }
    return labelled(label, texts.join(QLatin1Char(';')));
}
