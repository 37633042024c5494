#include "claimed_bytes.h"

#include <algorithm>

namespace {

using claim = claimed_bytes::claim;

bool begins_before(const claim &a, const claim &b)
{
    return a.begin < b.begin;
}

/// Which of the sorted claims share a byte with another one.
std::vector<bool> sharing(const std::vector<claim> &claims)
{
    std::vector<bool> shares(claims.size(), false);
    size_t longest = 0; // the one that reaches farthest up to now
    for (size_t i = 1; i < claims.size(); ++i) {
        if (claims[i].begin < claims[longest].end)
            shares[i] = shares[longest] = true;
        if (claims[i].end > claims[longest].end)
            longest = i;
    }
    return shares;
}

/// Whether the claim shares a byte with one of these, which are sorted and share none.
bool is_taken(const std::vector<claim> &kept, const claim &wanted)
{
    const auto behind = std::lower_bound(
        kept.begin(), kept.end(), wanted,
        [](const claim &each, const claim &asked) { return each.end <= asked.begin; });
    return behind != kept.end() && behind->begin < wanted.end;
}

} // namespace

std::vector<quint32> claimed_bytes::enter(std::vector<claim> claims)
{
    std::sort(claims.begin(), claims.end(), begins_before);
    const std::vector<bool> shares = sharing(claims);
    std::vector<quint32> refused;
    std::vector<claim> kept;
    for (size_t i = 0; i < claims.size(); ++i) {
        if (shares[i] || is_taken(m_kept, claims[i]))
            refused.push_back(claims[i].number);
        else
            kept.push_back(claims[i]);
    }
    std::vector<claim> all(m_kept.size() + kept.size());
    std::merge(m_kept.begin(), m_kept.end(), kept.begin(), kept.end(), all.begin(), begins_before);
    m_kept = std::move(all);
    return refused;
}
