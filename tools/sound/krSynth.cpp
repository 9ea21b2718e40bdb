// Additive synthesis with plucked and swelling envelopes; mixes are soft-clipped into 16 bits.
#include "krSynth.h"

#include <cmath>

namespace {

constexpr double twoPi = 6.283185307179586;

// A linear congruential generator: the noise must be the same on every run and machine.
class Noise {
public:
    float next() {
        state = state * 1664525u + 1013904223u;
        return static_cast<float>(state >> 8) / static_cast<float>(1u << 23) - 1.0f;
    }

private:
    uint32_t state = 0x2545F491u;
};

int16_t toSample(double v) {
    // tanh rounds off peaks instead of wrapping them.
    return static_cast<int16_t>(std::lround(std::tanh(v) * 32767.0));
}

double midiFrequency(int note) { return 440.0 * std::pow(2.0, (note - 69) / 12.0); }

// The engine's firing rate in Hz, a whole number so that one second holds whole cycles, and the
// harmonics that give it body: a four-stroke's second order is its loudest.
constexpr int firingRate = 40;
constexpr int humHarmonics = 16;
constexpr uint32_t humRate = 22050;
// Each firing pulse adds a burst of noise that dies away within this many seconds.
constexpr double pulseDecay = 0.004;
constexpr double humPeak = 0.7;

// The piece: 100 beats a minute, four beats a chord, the progression twice.
constexpr uint32_t musicRate = 32000;
constexpr double beat = 0.6;
constexpr int beatsPerChord = 4;
constexpr int rounds = 2;
struct Chord {
    int bass;
    int notes[3];
};
// A minor, F, C and G, in close voicings around middle C, each with its root two octaves down.
constexpr Chord progression[] = {{45, {57, 60, 64}}, {41, {57, 60, 65}}, {48, {55, 60, 64}}, {43, {55, 59, 62}}};
constexpr int chordCount = sizeof progression / sizeof progression[0];
// The arpeggio walks the chord an octave up in eighths, in this order of its notes.
constexpr int arpeggioOrder[] = {0, 1, 2, 1};
// The tails of the last bass note and arpeggio are faded out over this many seconds, so that the
// loop back to the start, where every voice begins at zero, does not click.
constexpr double loopFade = 0.005;

// A bright tone of a few harmonics falling off as 1/k, like a softened sawtooth.
double saw(double phase, int harmonics) {
    double v = 0;
    for (int k = 1; k <= harmonics; ++k) v += std::sin(phase * k) / k;
    return v;
}

// Rises over attack, holds, and falls over release at the end of length.
double swell(double t, double length, double attack, double release) {
    if (t < 0 || t > length) return 0;
    double e = 1;
    if (t < attack) e = t / attack;
    if (t > length - release) e = std::fmin(e, (length - t) / release);
    return e;
}

}  // namespace

krPcm krSynthTone(float frequency, float seconds, uint32_t rate, uint16_t channels, float peak) {
    krPcm pcm;
    pcm.channels = channels;
    pcm.rate = rate;
    const auto frames = static_cast<uint32_t>(std::lround(static_cast<double>(seconds) * rate));
    pcm.samples.resize(static_cast<size_t>(frames) * channels);
    for (uint32_t f = 0; f < frames; ++f) {
        const double v = peak * std::sin(twoPi * frequency * f / rate);
        for (uint16_t c = 0; c < channels; ++c)
            pcm.samples[static_cast<size_t>(f) * channels + c] = static_cast<int16_t>(std::lround(v * 32767.0));
    }
    return pcm;
}

krPcm krSynthEngineHum() {
    krPcm pcm;
    pcm.channels = 1;
    pcm.rate = humRate;
    pcm.samples.resize(humRate);
    std::vector<double> mix(humRate);
    Noise noise;
    double lowPassed = 0, peak = 0;
    for (uint32_t i = 0; i < humRate; ++i) {
        const double t = static_cast<double>(i) / humRate;
        const double phase = twoPi * firingRate * t;
        double v = 0;
        for (int k = 1; k <= humHarmonics; ++k) {
            const double weight = (k % 2 == 0 ? 1.0 : 0.6) / std::pow(k, 0.9);
            v += weight * std::sin(phase * k + 0.7 * k * k);
        }
        // Two pulses a firing cycle, each a decaying burst of low-passed noise.
        const double sincePulse = std::fmod(t * firingRate * 2, 1.0) / (firingRate * 2);
        lowPassed += 0.2 * (noise.next() - lowPassed);
        v += 1.5 * lowPassed * std::exp(-sincePulse / pulseDecay);
        mix[i] = v;
        peak = std::fmax(peak, std::fabs(v));
    }
    for (uint32_t i = 0; i < humRate; ++i) pcm.samples[i] = toSample(mix[i] * humPeak / peak);
    return pcm;
}

krPcm krSynthMusic() {
    krPcm pcm;
    pcm.channels = 2;
    pcm.rate = musicRate;
    const double chordLength = beat * beatsPerChord;
    const double length = chordLength * chordCount * rounds;
    const auto frames = static_cast<uint32_t>(length * musicRate);
    pcm.samples.resize(static_cast<size_t>(frames) * 2);
    Noise noise;
    double lastNoise = 0;
    for (uint32_t f = 0; f < frames; ++f) {
        const double t = static_cast<double>(f) / musicRate;
        const int chordIndex = static_cast<int>(t / chordLength);
        const Chord& chord = progression[chordIndex % chordCount];
        const double inChord = t - chordIndex * chordLength;
        double left = 0, right = 0;

        // The pad: each chord note as two voices detuned apart, one to each side.
        const double pad = 0.07 * swell(inChord, chordLength, 0.3, 0.35);
        for (int note : chord.notes) {
            const double hz = midiFrequency(note);
            left += pad * saw(twoPi * hz * 0.998 * t, 5);
            right += pad * saw(twoPi * hz * 1.002 * t, 5);
        }

        // The bass: the root plucked on every beat.
        const double inBeat = std::fmod(inChord, beat);
        const double bassHz = midiFrequency(chord.bass);
        const double bass = 0.3 * std::exp(-inBeat / 0.3) *
                            (std::sin(twoPi * bassHz * inBeat) + 0.4 * std::sin(2 * twoPi * bassHz * inBeat));
        left += bass;
        right += bass;

        // The arpeggio in eighths, its notes thrown left and right in turn.
        const double eighth = beat / 2;
        const int step = static_cast<int>(inChord / eighth);
        const double inStep = inChord - step * eighth;
        const double arpHz = midiFrequency(chord.notes[arpeggioOrder[step % 4]] + 12);
        const double arp = 0.14 * std::exp(-inStep / 0.16) *
                           (std::sin(twoPi * arpHz * inStep) + 0.3 * std::sin(3 * twoPi * arpHz * inStep));
        const double pan = step % 2 ? 0.7 : 0.3;
        left += arp * (1 - pan) * 2;
        right += arp * pan * 2;

        // A hi-hat on the off-beats: high-passed noise that dies within a few hundredths.
        const double offBeat = std::fmod(inChord + beat / 2, beat);
        const double n = noise.next();
        const double hat = 0.05 * (n - lastNoise) * std::exp(-offBeat / 0.02);
        lastNoise = n;
        left += hat;
        right += hat;

        const double fade = std::fmin(1.0, (length - t) / loopFade);
        pcm.samples[static_cast<size_t>(f) * 2] = toSample(left * fade);
        pcm.samples[static_cast<size_t>(f) * 2 + 1] = toSample(right * fade);
    }
    return pcm;
}
