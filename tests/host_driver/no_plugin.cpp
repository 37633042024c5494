#include <QtGlobal>

/// A library like any other: it can be loaded, but exports no factory.
extern "C" Q_DECL_EXPORT int answer()
{
    return 42;
}
