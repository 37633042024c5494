#include "file_privileges.h"

#ifdef __linux__
#include <linux/capability.h>
#include <sys/prctl.h>
#endif

namespace test_support {

void drop_file_privileges()
{
#ifdef __linux__
    // What the bounding set lacks is gone after the program was executed.
    prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
    prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
    prctl(PR_CAPBSET_DROP, CAP_FOWNER);
#endif
}

} // namespace test_support
