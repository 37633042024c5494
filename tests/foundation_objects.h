#ifndef FOUNDATION_OBJECTS_H
#define FOUNDATION_OBJECTS_H

#include <QList>
#include <QString>

#include <optional>
#include <utility>

namespace test_support {

/// Makes Foundation objects for tests and hands them out as untyped pointers, which live as long as
/// this object.
class foundation_objects
{
public:
    foundation_objects();
    ~foundation_objects();
    Q_DISABLE_COPY_MOVE(foundation_objects)

    const void *string(const QString &text) const;
    const void *boolean(bool value) const;
    const void *integer(qint64 value) const;
    const void *real(double value) const;
    const void *date(double seconds_since_1970) const;
    const void *array(const QList<const void *> &elements) const;
    const void *dictionary(const QList<std::pair<const void *, const void *>> &pairs) const;
    /// A dictionary that throws an Objective-C exception whatever it is asked for.
    const void *throwing_dictionary() const;
    /// A key that throws an Objective-C exception when it is to describe itself.
    const void *throwing_key() const;
    /// A date whose interval is not a number.
    const void *date_without_number() const;

    /// The Foundation objects that are alive, as a list of counts by class; the first call begins
    /// the counting. Nothing where the platform keeps no such list.
    static std::optional<QString> living_objects();

private:
    void *pool;
};

} // namespace test_support

#endif
