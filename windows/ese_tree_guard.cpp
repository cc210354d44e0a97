#include "windows/ese_tree_guard.h"

#include <QtEndian>

namespace {

constexpr int most_levels = 8;
constexpr int most_turns = 4; // a damaged number may lead to the pages of another branch

class tree_walk
{
public:
    tree_walk(const ese_file &file, int page_size, ese_page::content_kind wanted)
        : pages(file.bytes(), page_size), view(file.stream().view()), content(wanted)
    {
    }

    bool take_page(quint32 number, int level)
    {
        const std::optional<ese_page> page = pages.page(view.stored_page(number));
        if (!page) {
            return true;
        }
        tree = level == 0 ? page->tree() : tree;
        if (page->tree() != tree || page->kind() != content || level > most_levels ||
            ++pages_taken > most_turns * pages.count()) {
            return false;
        }
        for (int index = 0; !page->is_leaf() && index < page->count(); ++index) {
            const std::optional<ese_page_entry> entry = page->entry(index);
            if (entry && entry->size >= static_cast<int>(sizeof(quint32)) &&
                !take_page(qFromLittleEndian<quint32>(entry->data), level + 1)) {
                return false;
            }
        }
        return true;
    }

private:
    ese_page_source pages;
    const ese_root_view &view;
    const ese_page::content_kind content;
    quint32 tree = 0;
    qint64 pages_taken = 0;
};

} // namespace

bool may_walk_tree(const ese_file &file, quint32 root, ese_page::content_kind content)
{
    libesedb_error_t *error = nullptr;
    uint32_t page_size = 0;
    settled(libesedb_file_get_page_size(file.handle(), &page_size, &error), error);
    return root != 0 && tree_walk(file, static_cast<int>(page_size), content).take_page(root, 0);
}
