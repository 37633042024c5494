#ifndef LOG_LINE_HOOK_H
#define LOG_LINE_HOOK_H

#include "kept_value.h"
#include "plugin_static_function.h"

#include <QString>
#include <functional>

namespace test_support {

/// Calls an action with each line of the debug log, from within the operation that writes it. One
/// hook at a time; other messages of Qt are swallowed meanwhile.
class log_line_hook
{
public:
    explicit log_line_hook(const std::function<void(const QString &line)> &action);
    ~log_line_hook();
    log_line_hook(const log_line_hook &) = delete;
    log_line_hook &operator=(const log_line_hook &) = delete;

private:
    kept_value<bool> m_terminal{plugin_static_function::debug_print_on_terminal_bool};
    QtMessageHandler m_earlier;
};

} // namespace test_support

#endif
