// Looks for bytes for which PROPERTY, a function of LinkProperties, does not hold. The first byte of the
// input is its parameter.

#include "LinkProperties.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size > 0 && !LinkProperties::PROPERTY(data[0], LinkData::Bytes(data + 1, data + size)))
        std::abort(); // the fuzzer keeps the input
    return 0;
}
