#ifndef FILE_SIZE_LIMIT_H
#define FILE_SIZE_LIMIT_H

#include <QtGlobal>

#include <csignal>
#include <sys/resource.h>

namespace test_support {

/// Makes writing beyond a size fail, as on a full disk, for as long as it lives.
class file_size_limit
{
public:
    explicit file_size_limit(rlim_t bytes) : previous_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &previous_limit);
        const rlimit limit = {bytes, previous_limit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~file_size_limit()
    {
        setrlimit(RLIMIT_FSIZE, &previous_limit);
        std::signal(SIGXFSZ, previous_handler);
    }
    Q_DISABLE_COPY_MOVE(file_size_limit)

private:
    using signal_handler = void (*)(int);
    signal_handler previous_handler;
    rlimit previous_limit = {};
};

} // namespace test_support

#endif
