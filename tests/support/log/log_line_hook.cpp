#include "log_line_hook.h"

namespace test_support {

namespace {

std::function<void(const QString &)> current_action;

void pass_on(QtMsgType type, const QMessageLogContext & /*context*/, const QString &message)
{
    if (type == QtDebugMsg)
        current_action(message);
}

} // namespace

log_line_hook::log_line_hook(const std::function<void(const QString &)> &action)
{
    current_action = action;
    m_earlier = qInstallMessageHandler(pass_on);
    plugin_static_function::debug_print_on_terminal_bool = true;
}

log_line_hook::~log_line_hook()
{
    qInstallMessageHandler(m_earlier);
}

} // namespace test_support
