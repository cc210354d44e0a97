/// Damages an evidence tree at random, as a hostile or broken source would be.
#pragma once

#include <QString>

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>

namespace trial {

struct tree_damage
{
    QString description; ///< a line for each damage
    std::set<std::string>
        damaged; ///< what is no longer as it was, relative to the root: files, folders, what was below
};

/// In: the root; a folder outside of it for links to lead to, with "file" and "folder" in it; the seed: the same one
/// does the same to the same tree.
tree_damage damage_tree(const std::filesystem::path &root, const std::filesystem::path &outside, uint64_t seed);

} // namespace trial
