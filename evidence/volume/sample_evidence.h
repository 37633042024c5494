#ifndef SAMPLE_EVIDENCE_H
#define SAMPLE_EVIDENCE_H

#include "evidence_volume.h"

namespace evidence {

/// How many rows add_sample_evidence() gives each table.
constexpr qint64 sample_row_count = 3;

/// Adds evidence for every result table. Of the rows of a users' table two are of the account
/// "ann" and one is of "bob".
void add_sample_evidence(evidence_volume &volume);

} // namespace evidence

#endif
