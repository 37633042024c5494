#ifndef SAMPLE_EVIDENCE_H
#define SAMPLE_EVIDENCE_H

#include "sample_rows.h"

namespace test_support {

/// Adds three rows of evidence for every artefact, see add_sample_rows().
void add_sample_evidence(evidence::evidence_volume &volume);

} // namespace test_support

#endif
