/// Trees of pages: leaves that hold the entries in the order of their keys, branches above, one root.
#pragma once

#include "evidence/ese_page.h"

#include <QByteArray>

#include <memory>
#include <vector>

namespace evidence::ese {

/// The file as its trees see it.
class page_store
{
public:
    virtual ~page_store() = default;
    virtual const file_format &format() const = 0;
    /// Out: the number of a page that nobody has yet.
    virtual quint32 allocate() = 0;
    virtual void write(quint32 number, const QByteArray &page) = 0;
};

/// How the keys of a tree's leaves are stored.
enum class key_storage
{
    /// An entry leaves out what its key has in common with the page's first key.
    shared_beginnings,
    /// The page's first entry holds the whole key and the entries none of their own, so that a leaf ends where the key
    /// is another, a branch has two children and the root one.
    in_first_entry,
};

/// A tree that is filled in the order of its keys.
class tree_writer
{
public:
    /// In: the root's page number; the object id of the tree; flags that all its pages have; the root page of the tree
    /// that it belongs to.
    tree_writer(page_store &store, quint32 root, quint32 object, quint32 flags, quint32 parent_root,
                key_storage keys = key_storage::shared_beginnings);
    ~tree_writer();
    tree_writer(const tree_writer &) = delete;
    tree_writer &operator=(const tree_writer &) = delete;

    /// In: a key above all before; data that fit into a page. In: what the keys of a page that starts with this entry
    /// shall share; the key itself unless told.
    void append(const QByteArray &key, const QByteArray &data, const QByteArray &shared_key = QByteArray());

    /// Writes what is not written yet; nothing can be appended then.
    void finish();

    quint32 root_page() const { return root; }

private:
    class level;
    friend class level;

    void append_to_level(size_t index, const QByteArray &key, const QByteArray &data, const QByteArray &shared_key);

    page_store &store;
    quint32 root;
    quint32 object;
    quint32 flags;
    quint32 parent_root;
    key_storage keys;
    quint32 pages = 1;
    std::vector<std::unique_ptr<level>> levels;
};

} // namespace evidence::ese
