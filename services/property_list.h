/// Property lists, XML and binary: the values that applications keep their settings in.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>
#include <utility>
#include <vector>

/// One value of a property list, valid as long as the list. Every question has an answer: asked of a value that is
/// absent or of another kind, it is an empty text, 0 or no value.
class property_list_value
{
public:
    enum class kind
    {
        none,
        dictionary,
        array,
        string,
        number,
        date,
        data,
        other
    };

    property_list_value() = default;

    kind get_kind() const;
    bool is_dictionary() const { return get_kind() == kind::dictionary; }
    bool is_array() const { return get_kind() == kind::array; }
    bool is_string() const { return get_kind() == kind::string; }
    bool is_number() const { return get_kind() == kind::number; }
    bool is_date() const { return get_kind() == kind::date; }
    /// A boolean is a number too, of value 1 or 0; this tells it from the others.
    bool is_boolean() const;
    /// A number that was stored as a real.
    bool is_real() const;

    /// The value under a key of a dictionary.
    property_list_value object_for_key(const QString &key) const;
    property_list_value object_for_key(const char *utf8_key) const;
    /// The keys of a dictionary, in the order of the file.
    QStringList all_keys() const;
    /// The keys with their values, in the same order: the way to walk a large dictionary. A look-up in a binary list
    /// passes all keys in front of the one it finds.
    std::vector<std::pair<QString, property_list_value>> entries() const;

    /// How many elements an array has.
    int count() const;
    property_list_value object_at(int index) const;
    /// All elements of an array: the way to walk a long one.
    std::vector<property_list_value> elements() const;

    QString text() const;         ///< of a string
    double double_value() const;  ///< of a number
    qint64 integer_value() const; ///< of a number, cut towards zero; what does not fit is the nearest that does
    QString string_value() const; ///< of a number, in decimal; a boolean is "1" or "0"
    /// Of a date: seconds since 1970 UTC, with their fraction.
    double time_interval_since_1970() const;
    QByteArray data() const;

private:
    friend class property_list;
    explicit property_list_value(void *plist_node) : node(plist_node) {}

    void *node = nullptr;
};

/// A property list, read whole. What is missing, cut off, damaged, nested beyond sense or no property list at all is a
/// null list, whose root is no value.
class property_list
{
public:
    property_list() = default;

    /// Reads a file of at most 64 MiB.
    static property_list from_file(const QString &path);
    /// In: also what the list may unfold to (bytes).
    static property_list from_bytes(const QByteArray &content, quint64 unfolded_size_limit = Q_UINT64_C(512) << 20);

    bool is_null() const { return !tree; }
    property_list_value root() const { return property_list_value(tree.get()); }
    /// The list as XML text; null for a null list, or when the text would be longer than the limit (bytes).
    QByteArray as_xml(quint64 size_limit) const;

private:
    struct tree_deleter
    {
        void operator()(void *node) const;
    };

    std::unique_ptr<void, tree_deleter> tree;
};
