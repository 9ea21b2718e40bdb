// The encoder is fed in blocks and its packets go into Ogg pages as they come; the headers stand
// on pages of their own, as decoders expect.
#include "krVorbisWriter.h"

#include <ogg/ogg.h>
#include <vorbis/vorbisenc.h>

namespace {

// Frames handed to the encoder at a time.
constexpr uint32_t blockFrames = 1024;
// The stream's serial number; fixed, so that the same samples always give the same file.
constexpr int streamSerial = 0x4B72;

void append(std::string& out, const ogg_page& page) {
    out.append(reinterpret_cast<const char*>(page.header), static_cast<size_t>(page.header_len));
    out.append(reinterpret_cast<const char*>(page.body), static_cast<size_t>(page.body_len));
}

// The encoder's state, torn down in reverse on every way out.
struct Encoder {
    vorbis_info info;
    vorbis_comment comment;
    vorbis_dsp_state dsp;
    vorbis_block block;
    ogg_stream_state stream;
    bool analysing = false;

    Encoder() {
        vorbis_info_init(&info);
        vorbis_comment_init(&comment);
    }
    ~Encoder() {
        if (analysing) {
            ogg_stream_clear(&stream);
            vorbis_block_clear(&block);
            vorbis_dsp_clear(&dsp);
        }
        vorbis_comment_clear(&comment);
        vorbis_info_clear(&info);
    }
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    // Moves every finished packet into pages and the full pages into out.
    void drain(std::string& out) {
        ogg_packet packet;
        ogg_page page;
        while (vorbis_analysis_blockout(&dsp, &block) == 1) {
            vorbis_analysis(&block, nullptr);
            vorbis_bitrate_addblock(&block);
            while (vorbis_bitrate_flushpacket(&dsp, &packet)) {
                ogg_stream_packetin(&stream, &packet);
                while (ogg_stream_pageout(&stream, &page)) append(out, page);
            }
        }
    }
};

}  // namespace

bool krEncodeVorbis(const krPcm& pcm, float quality, std::string& out, std::string& error) {
    out.clear();
    Encoder e;
    if (pcm.channels == 0 || vorbis_encode_init_vbr(&e.info, pcm.channels, static_cast<long>(pcm.rate), quality) != 0) {
        error = "the encoder takes no " + std::to_string(pcm.channels) + " channels at " + std::to_string(pcm.rate) +
                " Hz and quality " + std::to_string(quality);
        return false;
    }
    vorbis_comment_add_tag(&e.comment, "ENCODER", "kerrin-sound");
    vorbis_analysis_init(&e.dsp, &e.info);
    vorbis_block_init(&e.dsp, &e.block);
    ogg_stream_init(&e.stream, streamSerial);
    e.analysing = true;

    ogg_packet identification, comments, codebooks;
    vorbis_analysis_headerout(&e.dsp, &e.comment, &identification, &comments, &codebooks);
    ogg_stream_packetin(&e.stream, &identification);
    ogg_stream_packetin(&e.stream, &comments);
    ogg_stream_packetin(&e.stream, &codebooks);
    ogg_page page;
    while (ogg_stream_flush(&e.stream, &page)) append(out, page);

    const uint32_t frames = pcm.frames();
    for (uint32_t first = 0; first < frames; first += blockFrames) {
        const uint32_t count = frames - first < blockFrames ? frames - first : blockFrames;
        float** buffer = vorbis_analysis_buffer(&e.dsp, static_cast<int>(count));
        for (uint32_t f = 0; f < count; ++f)
            for (uint16_t c = 0; c < pcm.channels; ++c)
                buffer[c][f] = static_cast<float>(pcm.samples[(first + f) * pcm.channels + c]) / 32768.0f;
        vorbis_analysis_wrote(&e.dsp, static_cast<int>(count));
        e.drain(out);
    }
    // The end of the samples: the last packets and the page that closes the stream.
    vorbis_analysis_wrote(&e.dsp, 0);
    e.drain(out);
    while (ogg_stream_flush(&e.stream, &page)) append(out, page);
    return true;
}
