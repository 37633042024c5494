// GNUstep's list of living objects is declared only where this is not defined.
#undef NDEBUG

#include "foundation_objects.h"

#import <Foundation/Foundation.h>

#include <limits>

@interface throwing_dictionary : NSDictionary
@end

@implementation throwing_dictionary
- (NSUInteger)count
{
    [NSException raise:@"test" format:@"count"];
    return 0;
}
- (id)objectForKey:(id)key
{
    [NSException raise:@"test" format:@"objectForKey"];
    return key;
}
- (NSEnumerator *)keyEnumerator
{
    [NSException raise:@"test" format:@"keyEnumerator"];
    return nil;
}
@end

@interface throwing_key : NSObject
@end

@implementation throwing_key
- (NSString *)description
{
    [NSException raise:@"test" format:@"description"];
    return nil;
}
@end

@interface date_without_number : NSDate
@end

@implementation date_without_number
- (id)initWithTimeIntervalSinceReferenceDate:(NSTimeInterval)seconds
{
    static_cast<void>(seconds);
    return self;
}
- (NSTimeInterval)timeIntervalSinceReferenceDate
{
    return std::numeric_limits<NSTimeInterval>::quiet_NaN();
}
- (NSTimeInterval)timeIntervalSince1970
{
    return std::numeric_limits<NSTimeInterval>::quiet_NaN();
}
@end

namespace test_support {

namespace {

id object_of(const void *pointer)
{
    return static_cast<id>(const_cast<void *>(pointer));
}

} // namespace

foundation_objects::foundation_objects() : pool([[NSAutoreleasePool alloc] init]) {}

foundation_objects::~foundation_objects()
{
    [static_cast<NSAutoreleasePool *>(pool) release];
}

const void *foundation_objects::string(const QString &text) const
{
    return [NSString stringWithCharacters:reinterpret_cast<const unichar *>(text.utf16())
                                   length:static_cast<NSUInteger>(text.size())];
}

const void *foundation_objects::boolean(bool value) const
{
    return [NSNumber numberWithBool:value ? YES : NO];
}

const void *foundation_objects::integer(qint64 value) const
{
    return [NSNumber numberWithLongLong:value];
}

const void *foundation_objects::real(double value) const
{
    return [NSNumber numberWithDouble:value];
}

const void *foundation_objects::date(double seconds_since_1970) const
{
    return [NSDate dateWithTimeIntervalSince1970:seconds_since_1970];
}

const void *foundation_objects::array(const QList<const void *> &elements) const
{
    NSMutableArray *array = [NSMutableArray array];
    for (const void *element : elements)
        [array addObject:object_of(element)];
    return array;
}

const void *
foundation_objects::dictionary(const QList<std::pair<const void *, const void *>> &pairs) const
{
    NSMutableDictionary *dictionary = [NSMutableDictionary dictionary];
    for (const auto &[key, value] : pairs)
        [dictionary setObject:object_of(value) forKey:object_of(key)];
    return dictionary;
}

const void *foundation_objects::throwing_dictionary() const
{
    return [[[::throwing_dictionary alloc] init] autorelease];
}

const void *foundation_objects::throwing_key() const
{
    return [[[::throwing_key alloc] init] autorelease];
}

const void *foundation_objects::date_without_number() const
{
    return [[[::date_without_number alloc] initWithTimeIntervalSinceReferenceDate:0] autorelease];
}

std::optional<QString> foundation_objects::living_objects()
{
#ifdef GNUSTEP
    GSDebugAllocationActive(YES);
    return QString::fromLatin1(GSDebugAllocationList(NO));
#else
    return std::nullopt;
#endif
}

} // namespace test_support
