#include "app/FlacCheck.h"

#include <FLAC/stream_decoder.h>

#include <memory>

namespace tindle::render
{

namespace
{
struct Count
{
    std::int64_t samples = 0;
};

FLAC__StreamDecoderWriteStatus countFrame(const FLAC__StreamDecoder*, const FLAC__Frame* frame,
                                          const FLAC__int32* const[], void* data)
{
    static_cast<Count*>(data)->samples += frame->header.blocksize;
    return FLAC__STREAM_DECODER_WRITE_STATUS_CONTINUE;
}

// A damaged frame is skipped by the decoder and simply not counted.
void ignoreError(const FLAC__StreamDecoder*, FLAC__StreamDecoderErrorStatus, void*) {}

struct DecoderDeleter
{
    void operator()(FLAC__StreamDecoder* d) const
    {
        FLAC__stream_decoder_finish(d);
        FLAC__stream_decoder_delete(d);
    }
};
} // namespace

std::int64_t decodableFlacSamples(const std::string& path)
{
    std::unique_ptr<FLAC__StreamDecoder, DecoderDeleter> decoder(FLAC__stream_decoder_new());
    if (decoder == nullptr)
        return -1;
    Count count;
    if (FLAC__stream_decoder_init_file(decoder.get(), path.c_str(), countFrame, nullptr, ignoreError,
                                       &count) != FLAC__STREAM_DECODER_INIT_STATUS_OK)
        return -1;
    if (!FLAC__stream_decoder_process_until_end_of_stream(decoder.get()))
        return -1;
    return count.samples;
}

} // namespace tindle::render
