/// Writes property lists, with the keys of dictionaries in the order given.
#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>
#include <QVector>

namespace evidence {

/// One key of a dictionary with its value. The value's QVariant type decides the kind that is written: bool, any
/// integer, double, QString, QDateTime (date), QByteArray (data), QVariantList or QStringList (array),
/// property_list_dictionary (dictionary).
struct property_list_entry
{
    property_list_entry() = default;
    property_list_entry(const char *utf8_key, QVariant value)
        : key(QString::fromUtf8(utf8_key)), value(std::move(value))
    {
    }
    property_list_entry(QString key, QVariant value) : key(std::move(key)), value(std::move(value)) {}

    QString key;
    QVariant value;
};

/// A dictionary that keeps the order of its keys, which a QVariantMap would sort:
/// `property_list_dictionary{{"uniqueID", id}, {"children", property_list_dictionary{}}}`.
class property_list_dictionary : public QVector<property_list_entry>
{
public:
    using QVector<property_list_entry>::QVector;
    operator QVariant() const; // NOLINT(google-explicit-constructor): a dictionary is a value like any other
};

enum class property_list_form
{
    xml,
    binary
};

/// Out: the file's bytes. A value of another type than those above throws evidence_error.
QByteArray property_list_bytes(const QVariant &root, property_list_form form);

/// Writes the file and makes its folder.
void write_property_list_file(const QString &path, const QVariant &root, property_list_form form);

} // namespace evidence

Q_DECLARE_METATYPE(evidence::property_list_dictionary)
