#include "windows/ese_table_records.h"

#include "windows/ese_tree_guard.h"

#include <algorithm>
#include <limits>

// Freed from the last to the first.
struct ese_table_records::open_window
{
    open_window(const ese_source_handle &whole, const ese_root_window &shown) : source(whole, shown) {}

    size_t index = 0;
    ese_source_handle source;
    ese_file_handle library_file;
    ese_table_handle table;
};

ese_table_records::ese_table_records(const ese_file &source, const QByteArray &name, libesedb_table_t *handle,
                                     const window_plan &plan)
    : file(source), table_name(name), table(handle)
{
    if (table) {
        const quint32 root = file.stream().catalog().roots(table_name).records;
        may_walk = may_walk_tree(file, root, ese_page::content_kind::records);
        plan_windows(root, plan);
    }
}

ese_table_records::~ese_table_records() = default;

void ese_table_records::plan_windows(quint32 root, const window_plan &plan)
{
    constexpr int most_catalog_records = 1000000; // read by all windows together
    const auto shape = file.stream().view().shape_of(root);
    if (!shape || !file.stream().is_offered()) {
        return;
    }
    const int affordable = most_catalog_records / std::max(1, file.stream().catalog().record_count());
    const int worthwhile = shape->leads_to_leaves ? shape->child_count / plan.least_leaves : shape->child_count;
    const int count = std::min({worthwhile, plan.most_windows, affordable});
    for (int i = 0; count > 1 && i < count; ++i) {
        const int first = static_cast<int>(qint64{shape->child_count} * i / count);
        const int end = static_cast<int>(qint64{shape->child_count} * (i + 1) / count);
        windows.push_back({{root, first, end - first}});
    }
}

// Out: the table as it is in the window; null when it cannot be opened.
libesedb_table_t *ese_table_records::enter(size_t index, libesedb_error_t **error)
{
    if (current && current->index == index) {
        return current->table.get();
    }
    current.reset(); // one at a time holds its pages in memory
    current = std::make_unique<open_window>(file.stream(), windows[index].shown);
    current->index = index;
    libesedb_file_t *opened = nullptr;
    if (libesedb_file_initialize(&opened, error) != 1) {
        return nullptr;
    }
    current->library_file.reset(opened);
    libesedb_table_t *found = nullptr;
    if (current->source.open(opened, error) == 1) {
        libesedb_file_get_table_by_utf8_name(opened, reinterpret_cast<const uint8_t *>(table_name.constData()),
                                             static_cast<size_t>(table_name.size()), &found, error);
    }
    current->table.reset(found);
    return found;
}

int ese_table_records::count(int *count, libesedb_error_t **error)
{
    if (!may_walk) {
        return -1;
    }
    if (windows.empty()) {
        return libesedb_table_get_number_of_records(table, count, error);
    }
    int sum = 0;
    for (size_t i = 0; i < windows.size(); ++i) {
        int records = 0;
        libesedb_table_t *part = enter(i, error);
        if (!part || libesedb_table_get_number_of_records(part, &records, error) != 1 ||
            records > std::numeric_limits<int>::max() - sum) {
            return -1;
        }
        windows[i].first_record = sum;
        sum += records;
    }
    *count = sum;
    return 1;
}

int ese_table_records::get(int index, libesedb_record_t **record, libesedb_error_t **error)
{
    if (!may_walk) {
        return -1;
    }
    if (windows.empty()) {
        return libesedb_table_get_record(table, index, record, error);
    }
    const auto behind = std::upper_bound(windows.begin(), windows.end(), index,
                                         [](int wanted, const window &each) { return wanted < each.first_record; });
    const auto position = static_cast<size_t>(behind - windows.begin()) - 1;
    libesedb_table_t *part = enter(position, error);
    return part ? libesedb_table_get_record(part, index - windows[position].first_record, record, error) : -1;
}
