/// One table of an ESE database: the tree of its records and, once it has any, that of its long values.
#pragma once

#include "evidence/ese_record.h"
#include "evidence/ese_tree.h"

#include <QByteArray>

#include <memory>
#include <optional>
#include <vector>

namespace evidence::ese {

/// The root page and the object id of a tree.
struct tree_place
{
    quint32 root = 0;
    quint32 object = 0;
};

class table_writer
{
public:
    /// In: the places of the two trees; the second one's page is taken when a long value comes.
    table_writer(page_store &store, const QByteArray &name, const std::vector<ese_column> &columns, tree_place records,
                 quint32 long_value_object, key_storage long_value_keys);

    /// The key is the record's number. Out: its position.
    int add_record(const std::vector<ese_value> &values);
    /// In: a key above all before.
    void add_record(const QByteArray &key, const std::vector<ese_value> &values);
    void finish();

    const QByteArray &name() const { return table_name; }
    const record_layout &layout() const { return records_layout; }
    const tree_place &records() const { return record_place; }
    /// Its root is 0 where there is no long value.
    const tree_place &long_values() const { return long_value_place; }
    bool holds_compressed() const { return has_compressed; }

private:
    quint32 store_long_value(const QByteArray &bytes, ese_compression compression);
    int segment_bytes() const;

    page_store &store;
    QByteArray table_name;
    record_layout records_layout;
    tree_place record_place;
    tree_place long_value_place;
    key_storage long_value_keys;
    tree_writer record_tree;
    std::optional<tree_writer> long_value_tree;
    quint32 record_count = 0;
    quint32 long_value_count = 0;
    bool has_compressed = false;
};

} // namespace evidence::ese
