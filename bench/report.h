/// What mail-bench prints.
#pragma once

#include "bench/measurement.h"

namespace bench {

void print_header();
void print(const measurement &result);
/// How time grows from the first measurement to each later one of the same work.
void print_growth(const QVector<measurement> &results);

} // namespace bench
