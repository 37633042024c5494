#ifndef LOCAL_ZONE_H
#define LOCAL_ZONE_H

#include <QByteArray>
#include <QtGlobal>

#include <ctime>

namespace test_support {

/// Gives the process another local time zone for as long as it lives.
class local_zone
{
public:
    explicit local_zone(const QByteArray &zone) : previous(qgetenv("TZ"))
    {
        qputenv("TZ", zone);
        tzset();
    }
    ~local_zone()
    {
        if (previous.isNull())
            qunsetenv("TZ");
        else
            qputenv("TZ", previous);
        tzset();
    }
    Q_DISABLE_COPY_MOVE(local_zone)

private:
    QByteArray previous;
};

} // namespace test_support

#endif
