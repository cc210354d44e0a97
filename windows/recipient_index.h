/// Which recipients of a store bear a value that other records name: what a search through all of them would find, in
/// their order, without the search.
#pragma once

#include "windows/specific_table.h"

#include <QHash>
#include <QList>
#include <QString>

#include <vector>

class recipient_index
{
public:
    using recipient = specific_table::struct_recipients;

    /// In: the recipients, which outlive the index unchanged, and the field they are looked up by. A null value is
    /// found as an empty one.
    recipient_index(const QList<recipient> &recipients, QString recipient::*field);

    /// Out: the recipients with this value, in stored order, by their positions.
    std::vector<int> positions_of(const QString &value) const;

private:
    struct chain
    {
        int first;
        int last;
    };

    QHash<QString, chain> chains;
    std::vector<int> next_of; // by position: the next recipient with the same value, or -1
};
