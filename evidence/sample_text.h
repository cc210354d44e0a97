/// People and words of many scripts, for sample trees of all kinds.
#pragma once

#include "evidence/sample_random.h"

#include <QString>

namespace evidence {

struct sample_person
{
    QString name;    ///< may be empty: a bare address
    QString address; ///< in ASCII, with capitals now and then
};

/// Out: person `number`; the same number is the same person in every tree.
sample_person person_of(uint64_t number);

/// Out: a subject line. Some come again and again, as newsletters do.
QString subject_of(sample_random &random);

/// Out: running text of about that many characters, at least one sentence.
QString text_of(sample_random &random, int characters);

/// Out: a UUID in capitals.
QString uuid_of(sample_random &random);

} // namespace evidence
