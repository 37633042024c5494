#ifndef CANCEL_TEST_H
#define CANCEL_TEST_H

#include <functional>

/// Whether the work shall end before its end. Empty: never.
using cancel_test = std::function<bool()>;

inline bool is_cancelled(const cancel_test &test)
{
    return test && test();
}

#endif
