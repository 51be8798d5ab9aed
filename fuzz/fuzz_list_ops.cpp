// Random sequences of list, sublist and list-iterator operations on an
// ArrayList or a LinkedList (the first byte chooses), checked step by step
// against a std::vector model that knows which views a change invalidates.
#include <qv/qvcl3.h>

#include "../tests/support/ListOperations.h"

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

const std::vector<IQVUnknown*>& elements()
{
    // Made once per process; released at exit, after the last input.
    static std::vector<qv::Reference<qv::Integer32>> numbers;
    static const std::vector<IQVUnknown*> pool = [] {
        std::vector<IQVUnknown*> made{nullptr};
        for (int32_t v = 0; v < 12; ++v) {
            numbers.push_back(qv::makeReference<qv::Integer32>(v));
            made.push_back(numbers.back()->GetUnknown());
        }
        return made;
    }();
    return pool;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1)
        return 0;
    qv::Reference<qv::collections::qvcom::AbstractList> list;
    if (data[0] & 1)
        list = qv::makeReference<qv::collections::qvcom::LinkedList>();
    else
        list = qv::makeReference<qv::collections::qvcom::ArrayList>();
    qvtest::ListOperations operations(*list, elements());
    if (const char* failure = operations.run(data + 1, size - 1)) {
        std::fprintf(stderr, "list operations disagree with the model: %s\n", failure);
        std::abort();
    }
    return 0;
}
