// Address parsing: no input crashes; every accepted address formats to
// canonical text that parses back to the same address and formats the same.

#include <qv/qvcl3.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    qv::net::InetAddress address;
    if (!qv::net::InetAddress::tryParse(reinterpret_cast<const char*>(data), size, address))
        return 0;
    const std::string canonical = address.toStdString();
    qv::net::InetAddress again;
    if (!qv::net::InetAddress::tryParse(canonical.data(), canonical.size(), again) || !(again == address) ||
        again.toStdString() != canonical) {
        std::fprintf(stderr, "contract broken: %s does not round-trip\n", canonical.c_str());
        std::abort();
    }
    return 0;
}
