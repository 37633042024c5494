#include "windows_installed_applications.h"

#include <QSemaphore>
#include <csignal>

/// The plug-in itself, to which Ctrl-C comes when its first tab is done; it goes on only after the
/// host has asked it to stop.
class interrupted_plugin : public windows_installed_applications
{
public:
    interrupted_plugin() : windows_installed_applications(nullptr)
    {
        connect(this, &windows_installed_applications::signal_tab_processed_of_plugin_overall, this,
                [this](int tabs) {
                    if (tabs == 1)
                        interrupt();
                });
    }

    void pub_cancel_extraction() override
    {
        windows_installed_applications::pub_cancel_extraction();
        m_told_to_stop.release();
    }

private:
    void interrupt()
    {
        std::raise(SIGINT);
        m_told_to_stop.acquire();
    }

    QSemaphore m_told_to_stop;
};

extern "C" Q_DECL_EXPORT void *create_object()
{
    return new interrupted_plugin;
}
