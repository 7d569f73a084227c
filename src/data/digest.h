// The digest a store keeps of each record its file holds: 128 bits of xxHash (XXH3) over the
// record's significant bytes, so that a save can tell which records it must write again without
// reading the file back. Two different records share a digest with odds of about 2^-128.
#ifndef PINDLE_DIGEST_H
#define PINDLE_DIGEST_H

#include <cstddef>
#include <cstdint>

class Digest {
public:
    static Digest of(const unsigned char* bytes, std::size_t size);

    bool operator==(const Digest& other) const {
        return low_ == other.low_ && high_ == other.high_;
    }
    bool operator!=(const Digest& other) const { return !(*this == other); }

private:
    Digest(std::uint64_t low, std::uint64_t high) : low_(low), high_(high) {}

    std::uint64_t low_;
    std::uint64_t high_;
};

#endif
