#include "bench/works.h"

#include "bench/ios_uniform_floor.h"
#include "evidence/sample_ios_file_tree.h"

namespace bench {

namespace {

/// Short mails, since no work of this tree reads them: their folders are listed.
void make_ios_file_tree(const QString &root, qint64 size, evidence::sqlite_storage storage)
{
    evidence::sample_ios_file_tree_options options;
    options.message_count = size;
    options.storage = storage;
    options.emlx_text_characters = 60;
    evidence::write_sample_ios_file_tree(root, options);
}

constexpr std::array<work, 1> works = {{
    {"ios-uniform",
     "the messages of an iOS file system",
     "messages",
     {10000, 100000},
     make_ios_file_tree,
     "iOS_Uniform",
     "messages",
     run_ios_uniform_floor,
     "messages",
     ios_uniform_columns,
     "CAST(row_id AS INTEGER)"},
}};

} // namespace

const work *work_named(const QString &name)
{
    for (const work &candidate : works) {
        if (name == QLatin1String(candidate.name)) {
            return &candidate;
        }
    }
    return nullptr;
}

QVector<const work *> all_works()
{
    QVector<const work *> all;
    for (const work &each : works) {
        all.append(&each);
    }
    return all;
}

} // namespace bench
