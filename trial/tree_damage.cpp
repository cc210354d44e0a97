#include "trial/tree_damage.h"

#include "evidence/sample_random.h"
#include "trial/workplace.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <map>
#include <sys/stat.h>
#include <vector>

namespace trial {

namespace {

namespace fs = std::filesystem;
using evidence::sample_random;

constexpr uint64_t most_damages = 5;
constexpr uint64_t header_bytes = 512; // where the numbers stand that decide how the rest is read

struct damage_site
{
    fs::path path;
    fs::path other; ///< a file of the same tree
    fs::path outside;
    sample_random &random;
};

std::string content_of(const fs::path &file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void write(const fs::path &file, const std::string &content)
{
    std::ofstream(file, std::ios::binary | std::ios::trunc) << content;
}

uint64_t place_in(const std::string &content, sample_random &random)
{
    return random.below(random.one_in(2) ? std::min<uint64_t>(content.size(), header_bytes) : content.size());
}

void flip_bits(const damage_site &site)
{
    std::string content = content_of(site.path);
    for (uint64_t bits = 1 + site.random.below(24); bits > 0 && !content.empty(); --bits) {
        content[place_in(content, site.random)] ^= static_cast<char>(1U << site.random.below(8));
    }
    write(site.path, content);
}

void overwrite_block(const damage_site &site)
{
    std::string content = content_of(site.path);
    if (content.empty()) {
        return;
    }
    const uint64_t begin = place_in(content, site.random);
    const uint64_t size = 1 + site.random.below(600);
    const bool is_noise = site.random.one_in(2);
    for (uint64_t at = begin; at < std::min<uint64_t>(begin + size, content.size()); ++at) {
        content[at] = is_noise ? static_cast<char>(site.random.bits()) : '\xff';
    }
    write(site.path, content);
}

void cut(const damage_site &site)
{
    const std::string content = content_of(site.path);
    write(site.path, content.substr(0, site.random.below(content.size() + 1)));
}

void make_empty(const damage_site &site)
{
    write(site.path, {});
}

void swap_with_other(const damage_site &site)
{
    const std::string mine = content_of(site.path);
    write(site.path, content_of(site.other));
    write(site.other, mine);
}

// Out: whether nothing stands there any more: a folder may have lost its permissions.
bool make_room(const fs::path &path)
{
    std::error_code failure;
    fs::remove_all(path, failure);
    return !failure;
}

void make_folder(const damage_site &site)
{
    const bool is_filled = site.random.one_in(2);
    if (make_room(site.path) && fs::create_directory(site.path) && is_filled) {
        write(site.path / "x.emlx", "x");
    }
}

void make_link(const damage_site &site)
{
    const std::array<fs::path, 7> targets = {site.outside / "file",
                                             site.outside / "folder",
                                             site.path.filename(),
                                             site.path.parent_path(),
                                             "../../../../../..",
                                             "nowhere",
                                             "/dev/zero"};
    const fs::path &target = site.random.pick(targets);
    if (make_room(site.path)) {
        fs::create_symlink(target, site.path);
    }
}

void make_pipe(const damage_site &site)
{
    if (make_room(site.path)) {
        ::mkfifo(site.path.c_str(), 0600);
    }
}

void take_permissions(const damage_site &site)
{
    ::chmod(site.path.c_str(), site.random.one_in(2) ? 0 : 0200);
}

void give_odd_name(const damage_site &site)
{
    const std::array<std::string, 7> names = {
        "a\nb", "\xff\xfe\x80",       "\xe2\x80\xaetxt.exe", "';drop table messages;", "..%2f..%2fx",
        " ",    std::string(255, 'n')};
    std::error_code ignored;
    fs::rename(site.path, site.path.parent_path() / site.random.pick(names), ignored);
}

void give_odd_suffix(const damage_site &site)
{
    const std::array<const char *, 4> suffixes = {".emlx", "-wal", ";++::++;", "\r"};
    std::error_code ignored;
    fs::rename(site.path, site.path.string() + site.random.pick(suffixes), ignored);
}

struct damage_kind
{
    const char *name;
    bool suits_folders;
    void (*apply)(const damage_site &site);
};

// clang-format off
constexpr std::array<damage_kind, 11> kinds = {{
    {"bits flipped",      false, flip_bits},
    {"block overwritten", false, overwrite_block},
    {"cut",               false, cut},
    {"emptied",           false, make_empty},
    {"swapped",           false, swap_with_other},
    {"made a folder",     true,  make_folder},
    {"made a link",       true,  make_link},
    {"made a pipe",       true,  make_pipe},
    {"permissions taken", true,  take_permissions},
    {"renamed",           true,  give_odd_name},
    {"name made longer",  true,  give_odd_suffix},
}};
// clang-format on

/// The files of a tree by what stands behind the last dot of their names, so that the few indexes of a tree are met as
/// often as its many mail files; its folders as one kind more.
using entries_by_kind = std::map<std::string, std::vector<fs::path>>;

entries_by_kind entries_below(const fs::path &root)
{
    entries_by_kind entries;
    std::error_code ignored;
    for (fs::recursive_directory_iterator at(root, fs::directory_options::skip_permission_denied, ignored), end;
         at != end; at.increment(ignored)) {
        if (at->is_symlink(ignored)) {
            continue;
        }
        if (at->is_directory(ignored)) {
            entries["/"].push_back(at->path());
        } else if (at->is_regular_file(ignored)) {
            const fs::path name = at->path().filename();
            const bool is_key = name.extension() == ".plist" || !name.has_extension();
            entries[is_key ? name.string() : name.extension().string()].push_back(at->path());
        }
    }
    for (auto &kind : entries) {
        std::sort(kind.second.begin(), kind.second.end()); // not in the order of the file system
    }
    return entries;
}

const fs::path &pick(const entries_by_kind &entries, sample_random &random)
{
    auto kind = entries.begin();
    std::advance(kind, static_cast<long>(random.below(entries.size())));
    return kind->second[random.below(kind->second.size())];
}

// A log of a database, or a file of its metadata, is part of it.
std::string principal_of(std::string path)
{
    for (const std::string suffix : {"-wal", "-shm"}) {
        if (path.size() > suffix.size() && path.compare(path.size() - suffix.size(), suffix.size(), suffix) == 0) {
            path.resize(path.size() - suffix.size());
        }
    }
    const size_t name = path.rfind('/') + 1;
    return path.compare(name, 2, "._") == 0 ? path.erase(name, 2) : path;
}

void note(const fs::path &root, const fs::path &path, std::set<std::string> &damaged)
{
    std::error_code ignored;
    damaged.insert(principal_of(path.lexically_relative(root).string()));
    if (!fs::is_symlink(path, ignored) && fs::is_directory(path, ignored)) {
        for (const fs::directory_entry &entry :
             fs::recursive_directory_iterator(path, fs::directory_options::skip_permission_denied, ignored)) {
            damaged.insert(principal_of(entry.path().lexically_relative(root).string()));
        }
    }
}

} // namespace

tree_damage damage_tree(const fs::path &root, const fs::path &outside, uint64_t seed)
{
    tree_damage done;
    sample_random random(seed);
    for (uint64_t left = 1 + random.below(most_damages); left > 0; --left) {
        const entries_by_kind entries = entries_below(root);
        if (entries.empty()) {
            break;
        }
        const fs::path path = pick(entries, random);
        const fs::path other = pick(entries, random);
        std::error_code ignored;
        const bool is_folder = fs::is_directory(path, ignored);
        const damage_kind *kind = &random.pick(kinds);
        while (is_folder && !kind->suits_folders) {
            kind = &random.pick(kinds);
        }
        if (kind->apply == swap_with_other) {
            if (fs::is_directory(other, ignored)) {
                continue;
            }
            note(root, other, done.damaged);
        }
        note(root, path, done.damaged);
        done.description +=
            QStringLiteral("  %1: %2\n").arg(QLatin1String(kind->name), text_of(path.lexically_relative(root)));
        kind->apply({path, other, outside, random});
    }
    return done;
}

} // namespace trial
