#ifndef PAGE_BATCH_H
#define PAGE_BATCH_H

#include <QByteArrayView>

#include <vector>

/// Where some bytes of the bins lie: an offset from the first bin, and a number of bytes.
struct page_reference
{
    quint32 offset;
    quint32 size;
};

/// Pages that a log brings into the bins at once. All lie within the bins, and the content has just
/// their bytes.
struct page_batch
{
    quint32 bins_size = 0;             ///< of all bins afterwards
    std::vector<page_reference> pages; ///< in the order of the log
    QByteArrayView content;            ///< the pages one behind the other; lives as long as the log
};

#endif
