#include "sample_evidence.h"

#include "artifact_list.h"

namespace test_support {

void add_sample_evidence(evidence::evidence_volume &volume)
{
    evidence::add_sample_rows(volume, described_artifacts());
}

} // namespace test_support
