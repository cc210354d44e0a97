/// Which rows of a result say anything of a file of the source.
#pragma once

#include "trial/result_rows.h"
#include "trial/schemes.h"

#include <set>
#include <string>

namespace trial {

/// In: the rows of a run over the whole source; what is damaged in it, relative to its root, each file by itself. Out:
/// the rows that owe nothing to what is damaged: neither do they name it, nor is it among the files that rows of their
/// table are known to be put together from.
result_rows rows_without(const scheme &source_scheme, const result_rows &whole, const std::set<std::string> &damaged);

} // namespace trial
