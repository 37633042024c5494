#include "extraction_check.h"
#include "fuzz_main.h"

FUZZ_MAIN(test_support::check_extraction)
