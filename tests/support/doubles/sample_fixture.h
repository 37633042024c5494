#ifndef SAMPLE_FIXTURE_H
#define SAMPLE_FIXTURE_H

#include "sample_evidence.h"
#include "worker_fixture.h"

namespace test_support {

/// A Windows worker that has found the sample evidence, which gives each table three rows.
struct sample_fixture : worker_fixture
{
    sample_fixture()
    {
        add_sample_evidence(volume);
        find_files();
    }
};

/// The message that ends an undisturbed run of the tab.
inline QString end_line(const result_tab &tab)
{
    return tab.log_line(QLatin1StringView("---ENDS---"));
}

} // namespace test_support

#endif
