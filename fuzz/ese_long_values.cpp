// The long values of an ESE table, read from the pages of their tree without the library.
#include "windows/ese_long_values.h"

#include "evidence/ese_bytes.h"
#include "fuzz/changed_ese_file.h"
#include "fuzz/fuzz_target.h"
#include "windows/ese_file.h"
#include "windows/ese_table_layout.h"

namespace {

constexpr quint32 most_numbers = 8;

struct opened_tree
{
    int page_size = 0;
    quint32 root_page = 0;
};

// Where the tree stands in the sound file of the kind.
opened_tree tree_of(const QByteArray &sound)
{
    libesedb_error_t *error = nullptr;
    ese_file file;
    require(file.open(file_with(sound, "sound"), error) == ese_file::opening::done, "a sound file opens");
    std::uint32_t page_size = 0;
    settled(libesedb_file_get_page_size(file.handle(), &page_size, &error), error);
    return {static_cast<int>(page_size), ese_table_layout(file.handle(), table_of_values).long_value_root()};
}

const opened_tree &sound_tree(unsigned char kind)
{
    static const opened_tree trees[] = {tree_of(changed_ese_file(QByteArray(1, '\0'))),
                                        tree_of(changed_ese_file(QByteArray(1, '\1'))),
                                        tree_of(changed_ese_file(QByteArray(1, '\2')))};
    return trees[kind % std::size(trees)];
}

} // namespace

void fuzz_one(const QByteArray &input)
{
    const opened_tree &tree = sound_tree(input.isEmpty() ? 0 : static_cast<unsigned char>(input.at(0)));
    const QByteArray content = changed_ese_file(input);
    const file_descriptor file = open_source_file(file_with(content));
    const QByteArrayList expected = long_values_of_table();
    ese_long_values values(file, tree.page_size, tree.root_page);
    qint64 sum = 0;
    for (quint32 number = 0; number < most_numbers; ++number) {
        const std::optional<QByteArray> value = values.value(evidence::ese::little_endian(number));
        sum += value ? value->size() : 0;
        const int index = static_cast<int>(number) - 1;
        if (input.size() <= 3 && index >= 0 && index < expected.size()) {
            require(value == expected.at(index), "the values of a sound file are those that were written");
        }
    }
    require(sum <= 1 << 26, "all values together are bounded");
    // A number of eight bytes that no file of the builder holds, and numbers that are none.
    require(!values.value(QByteArray(8, '\xff')), "there is no such value");
    require(!values.value("abc") && !values.value(QByteArray()), "a number has four bytes or eight");
}
