// krNetObject: the interface of what a server streams to its clients. A class mixes it in and
// writes its state as one record on the server; clients apply the record to their copy of the
// object bound under the same net id.
#pragma once

#include <cstdint>

// The wire gives a record's length as a signed byte: no record is longer than this.
inline constexpr int32_t krNetRecordCapacity = 127;

class krNetObject {
public:
    virtual ~krNetObject() = default;

    // Appends this object's record at buffer + size and adds its length to size. The caller gives
    // room for krNetRecordCapacity bytes from buffer on; a class that puts its own bytes in front
    // of its base's record writes them first and then lets the base append. frame is the server's
    // running count of state packets.
    virtual void writeState(uint8_t* buffer, int32_t& size, int32_t frame) = 0;
    // Applies a record of size bytes, which may be shorter than the writer's (a damaged or old
    // packet): a class reads only what is there. lag is the time in seconds over which the new
    // state should be reached.
    virtual void readState(const uint8_t* buffer, int32_t size, float lag) = 0;
};
