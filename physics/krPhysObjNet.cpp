// The state record of a body on the wire: written on the server, followed along a track on
// clients.
//
// Record, 21 bytes: flags (bit 1: absolute position), the orientation as four 16-bit fractions,
// then the world position as three floats. A relative record has three 16-bit fractions of 128
// metres from the grid base instead, and is 15 bytes long.
#include <cmath>
#include <cstring>

#include "core/krMain.h"
#include "physics/krPhysObj.h"

namespace {

constexpr uint8_t flagAbsolute = 2;
constexpr int32_t orientationAt = 1;
constexpr int32_t positionAt = 9;
constexpr int32_t absoluteSize = 21;
// Flags, orientation and three 16-bit offsets.
constexpr int32_t shortestRecord = 15;
// The grid of relative positions: offsets span one cell either way of the base.
constexpr float gridCell = 128.0f;
constexpr float gridInverse = 0.0078125f;
constexpr float halfCell = 64.0f;
// The shortest time over which a state is followed; a smaller lag would make the speed of the
// track unbounded.
constexpr float minLag = 0.001f;

int16_t readShort(const uint8_t* at) {
    int16_t v;
    std::memcpy(&v, at, sizeof v);
    return v;
}

// Per axis: the position's cell, rounded to the nearest with halves away from zero.
krVector3 baseOf(const krVector3& p) {
    return krVector3(std::round(p.x * gridInverse), std::round(p.y * gridInverse), std::round(p.z * gridInverse)) *
           gridCell;
}

// Moves a base by a cell where the decoded position lies more than half a cell from the target.
float correctBase(float base, float offset, float target) {
    if (offset + base > target + halfCell) return base - gridCell;
    if (offset + base < target - halfCell) return base + gridCell;
    return base;
}

}  // namespace

void krPhysObj::writeState(uint8_t* buffer, int32_t& size, int32_t) {
    uint8_t* out = buffer + size;
    out[0] = flagAbsolute;
    const krQuantQuat q = quantise(rotation);
    const int16_t parts[4] = {q.x, q.y, q.z, q.w};
    std::memcpy(out + orientationAt, parts, sizeof parts);
    const float p[3] = {position.x, position.y, position.z};
    std::memcpy(out + positionAt, p, sizeof p);
    size += absoluteSize;
    netBase = baseOf(position);
    ++netWrites;
}

void krPhysObj::readState(const uint8_t* buffer, int32_t size, float lag) {
    if (size < shortestRecord) return;
    const bool absolute = (buffer[0] & flagAbsolute) != 0;
    krVector3 target;
    if (absolute && size >= absoluteSize) {
        float p[3];
        std::memcpy(p, buffer + positionAt, sizeof p);
        target = krVector3(p[0], p[1], p[2]);
        // A position that is not a number would carry into every contact of the body.
        if (!isFinite(target)) {
            krMain::instance()->errorMsg("State of " + describe() + " ignored: its position is not a finite number");
            return;
        }
    }
    if (!netTrack) netTrack = new krNetTrack;
    netTrack->fromPosition = position;
    netTrack->fromOrientation = rotation;
    netTrack->rate = 1.0f / (lag > minLag ? lag : minLag);
    netTrack->t = 0;
    // A short absolute record restarts the segment from here and says nothing more.
    if (absolute && size < absoluteSize) return;

    const krQuantQuat q{readShort(buffer + orientationAt), readShort(buffer + orientationAt + 2),
                        readShort(buffer + orientationAt + 4), readShort(buffer + orientationAt + 6)};
    netTrack->toOrientation = dequantise(q);
    if (absolute) {
        netBase = baseOf(target);
    } else {
        const krQuantVector3 offsets{readShort(buffer + positionAt), readShort(buffer + positionAt + 2),
                                     readShort(buffer + positionAt + 4)};
        const krVector3 offset = dequantise(offsets, gridCell);
        const krVector3& previous = netTrack->toPosition;
        netBase = krVector3(correctBase(netBase.x, offset.x, previous.x), correctBase(netBase.y, offset.y, previous.y),
                            correctBase(netBase.z, offset.z, previous.z));
        target = offset + netBase;
    }
    netTrack->toPosition = target;
    velocity = (netTrack->toPosition - netTrack->fromPosition) * netTrack->rate;
}
