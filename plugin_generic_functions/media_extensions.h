#ifndef MEDIA_EXTENSIONS_H
#define MEDIA_EXTENSIONS_H

#include <QLatin1StringView>

/// The extensions of media files: lower case, with the leading dot, separated by blanks.
namespace media_extensions {

extern const QLatin1StringView image;
extern const QLatin1StringView video;
extern const QLatin1StringView audio;

} // namespace media_extensions

#endif
