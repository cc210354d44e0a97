#include "evidence/ese_tree.h"

#include "evidence/ese_bytes.h"
#include "evidence/files.h"

#include <algorithm>
#include <array>
#include <optional>

namespace evidence::ese {

namespace {

int common_bytes(const QByteArray &left, const QByteArray &right)
{
    const int most = std::min(left.size(), right.size());
    return static_cast<int>(std::mismatch(left.cbegin(), left.cbegin() + most, right.cbegin()).first - left.cbegin());
}

/// A key that stands above the last key of a page and not above the first one of the next.
QByteArray separator(const QByteArray &last, const QByteArray &next, key_storage keys)
{
    if (keys == key_storage::in_first_entry) {
        // libesedb 20181229 takes a key that equals the separator for one of the page below it, so no key equals it.
        return last + '\0';
    }
    return next.left(common_bytes(last, next) + 1);
}

} // namespace

/// The pages of one height. As long as its entries fit into one page they wait, for that page would be the root, whose
/// entries share no keys.
class tree_writer::level
{
public:
    level(tree_writer &tree, size_t height) : tree(tree), height(height) {}

    void append(const QByteArray &key, const QByteArray &data, const QByteArray &shared_key);
    /// Out: false when this level is the root, which has been written.
    bool finish();

private:
    struct entry
    {
        QByteArray key;
        QByteArray data;
        QByteArray shared_key;
    };

    static constexpr int root_header_bytes = 16;
    static constexpr int first_tag_bytes = 4;

    bool fits_root(const entry &next) const;
    void append_to_pages(const entry &next);
    bool add_to_page(const entry &next);
    void start_page(const entry &first, quint32 number, quint32 previous);
    void write_page(quint32 next_number);
    void write_root();
    quint32 level_flags() const;
    bool is_leaf() const { return height == 0; }

    tree_writer &tree;
    size_t height;
    std::vector<entry> waiting;
    int waiting_bytes = root_header_bytes + first_tag_bytes;
    std::optional<page_builder> page;
    quint32 page_number = 0;
    quint32 previous_number = 0;
    QByteArray last_key;
};

void tree_writer::level::append(const QByteArray &key, const QByteArray &data, const QByteArray &shared_key)
{
    const entry next{key, data, shared_key};
    if (page) {
        append_to_pages(next);
    } else if (fits_root(next)) {
        waiting_bytes += page_builder::bytes_of_entry(key, data);
        waiting.push_back(next);
    } else {
        waiting.push_back(next);
        for (const entry &waited : waiting) {
            append_to_pages(waited);
        }
        waiting.clear();
    }
}

bool tree_writer::level::fits_root(const entry &next) const
{
    if (tree.keys == key_storage::in_first_entry && (is_leaf() || !waiting.empty())) {
        return false;
    }
    const int bytes = waiting_bytes + page_builder::bytes_of_entry(next.key, next.data);
    return bytes <= page_builder::capacity(tree.store.format());
}

void tree_writer::level::append_to_pages(const entry &next)
{
    if (!page) {
        start_page(next, tree.store.allocate(), 0);
    } else if (!add_to_page(next)) {
        const quint32 next_number = tree.store.allocate();
        write_page(next_number);
        // A branch's own last key already says what its pages stay below.
        const QByteArray limit = is_leaf() ? separator(last_key, next.key, tree.keys) : last_key;
        tree.append_to_level(height + 1, limit, little_endian(page_number), QByteArray());
        start_page(next, next_number, page_number);
    }
    last_key = next.key;
}

void tree_writer::level::start_page(const entry &first, quint32 number, quint32 previous)
{
    const QByteArray &shared_key = first.shared_key.isEmpty() ? first.key : first.shared_key;
    const bool has_shared_key = is_leaf() || tree.keys == key_storage::in_first_entry;
    page.emplace(tree.store.format(), has_shared_key ? shared_key : QByteArray());
    page_number = number;
    previous_number = previous;
    ++tree.pages;
    if (!add_to_page(first)) {
        throw evidence_error(QStringLiteral("An entry of %1 bytes is larger than a page.").arg(first.data.size()));
    }
}

bool tree_writer::level::add_to_page(const entry &next)
{
    const int common = common_bytes(page->first(), next.key);
    if (tree.keys == key_storage::shared_beginnings) {
        const bool saves_space = common > 2; // what it takes to say how many
        return page->add(next.key, saves_space ? common : 0, next.data);
    }
    if (is_leaf() || page->entries() == 0) {
        return common == next.key.size() && page->add(next.key, common, next.data);
    }
    // The second and last entry of a branch needs no key: what stands below is bounded by the branch above.
    return page->entries() == 1 && page->add(QByteArray(), 0, next.data);
}

quint32 tree_writer::level::level_flags() const
{
    constexpr std::array<quint32, 2> by_height{page_flag::leaf, page_flag::parent_of_leaf};
    return tree.flags | (height < by_height.size() ? by_height.at(height) : 0);
}

void tree_writer::level::write_page(quint32 next_number)
{
    // Only leaves know their neighbours.
    const quint32 previous = is_leaf() ? previous_number : 0;
    const quint32 next = is_leaf() ? next_number : 0;
    tree.store.write(page_number, page->finish({page_number, previous, next, tree.object, level_flags()}));
}

bool tree_writer::level::finish()
{
    if (!page) {
        write_root();
        return false;
    }
    write_page(0);
    tree.append_to_level(height + 1, QByteArray(), little_endian(page_number), QByteArray());
    return true;
}

void tree_writer::level::write_root()
{
    constexpr quint32 in_one_extent = 0;
    page_builder root(tree.store.format(), little_endian(tree.pages) + little_endian(tree.parent_root) +
                                               little_endian(in_one_extent) + little_endian<quint32>(0));
    for (const entry &waited : waiting) {
        root.add(waited.key, 0, waited.data);
    }
    tree.store.write(tree.root, root.finish({tree.root, 0, 0, tree.object, level_flags() | page_flag::root}));
}

tree_writer::tree_writer(page_store &store, quint32 root, quint32 object, quint32 flags, quint32 parent_root,
                         key_storage keys)
    : store(store), root(root), object(object), flags(flags), parent_root(parent_root), keys(keys)
{
    levels.push_back(std::make_unique<level>(*this, 0));
}

tree_writer::~tree_writer() = default;

void tree_writer::append(const QByteArray &key, const QByteArray &data, const QByteArray &shared_key)
{
    append_to_level(0, key, data, shared_key);
}

void tree_writer::append_to_level(size_t index, const QByteArray &key, const QByteArray &data,
                                  const QByteArray &shared_key)
{
    if (index == levels.size()) {
        levels.push_back(std::make_unique<level>(*this, index));
    }
    levels[index]->append(key, data, shared_key);
}

void tree_writer::finish()
{
    // Each level that is not the root appends to the next one, which is there then.
    for (size_t index = 0; levels[index]->finish(); ++index) {
    }
}

} // namespace evidence::ese
