#ifndef TEXT_OPERATIONS_H
#define TEXT_OPERATIONS_H

/// How many operations fuzz_texts chooses from by the first byte of its input.
constexpr int text_operation_count = 34;

#endif
