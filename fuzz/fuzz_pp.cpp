// Feeds any bytes to the PP parser, then checks that a frame built with
// varda_pp_fill_header over the input comes back whole.
#include <string.h>

#include <vector>

#include "fuzz_check.h"
#include "varda_pp_host.h"

namespace
{

std::vector<std::vector<uint8_t>> g_frames;
const varda_pp_ctx_t *g_ctx = nullptr;

using fuzz::check;

void onFrame(uint8_t *payload, uint16_t len)
{
    check(payload == g_ctx->d + PP_HEADER_LEN && len <= 255);
    g_frames.emplace_back(payload, payload + len);
}

void parseAll(const uint8_t *data, size_t size)
{
    g_frames.clear();
    varda_pp_ctx_t ctx;
    g_ctx = &ctx;
    varda_pp_init(&ctx, onFrame);
    for (size_t i = 0; i < size; i++) {
        varda_pp_parse(&ctx, data[i]);
        // ASan cannot see a store that runs past d into d_len.
        check(ctx.d_len <= PP_MAX_FRAME && ctx.state <= VRD_FRAME_PAYLOAD);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    parseAll(data, size);

    const uint8_t len = uint8_t(size < 255 ? size : 255);
    vrd_pphdr_t hdr;
    varda_pp_fill_header(&hdr, data, len);
    std::vector<uint8_t> wire(sizeof hdr + len);
    memcpy(wire.data(), &hdr, sizeof hdr);
    if (len)
        memcpy(wire.data() + sizeof hdr, data, len);
    parseAll(wire.data(), wire.size());
    if (len == 0)
        check(g_frames.empty()); // a zero-length frame is never delivered
    else
        check(g_frames.size() == 1 && g_frames[0] == std::vector<uint8_t>(data, data + len));
    return 0;
}
