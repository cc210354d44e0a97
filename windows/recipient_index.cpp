#include "windows/recipient_index.h"

recipient_index::recipient_index(const QList<recipient> &recipients, QString recipient::*field)
    : next_of(static_cast<std::size_t>(recipients.size()), -1)
{
    chains.reserve(recipients.size());
    for (int at = 0; at < recipients.size(); ++at) {
        const QString &value = recipients.at(at).*field;
        const auto known = chains.find(value);
        if (known == chains.end()) {
            chains.insert(value, {at, at});
        } else {
            next_of[static_cast<std::size_t>(known->last)] = at;
            known->last = at;
        }
    }
}

std::vector<int> recipient_index::positions_of(const QString &value) const
{
    std::vector<int> positions;
    const auto known = chains.constFind(value);
    for (int at = known == chains.constEnd() ? -1 : known->first; at >= 0; at = next_of[static_cast<std::size_t>(at)]) {
        positions.push_back(at);
    }
    return positions;
}
