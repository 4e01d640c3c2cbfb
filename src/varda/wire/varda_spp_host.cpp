#include "varda_spp_host.h"

#include "varda_frame_rx.h"

void varda_spp_init(spp_ctx_t *ctx, spp_data_cb_t data_cb)
{
    ctx->d_len = 0;
    ctx->d_target = 0;
    ctx->counters.bad_crc = 0;
    ctx->counters.dropped = 0;
    ctx->state = VRD_FRAME_START;
    ctx->data_cb = data_cb;
}

static void spp_frame_complete(spp_ctx_t *ctx)
{
    if (vrd_frame_check(ctx->d, ctx->d_len, &ctx->counters) && ctx->data_cb)
        ctx->data_cb(ctx->d[3], ctx->d + SPP_HEADER_LEN, (uint16_t)(ctx->d_len - SPP_HEADER_LEN));
}

void varda_spp_parse(spp_ctx_t *ctx, uint8_t byte)
{
    if (vrd_frame_rx_byte(&VARDA_SPP_FORMAT, ctx->d, &ctx->d_len, &ctx->d_target, &ctx->state,
            &ctx->counters.dropped, byte))
        spp_frame_complete(ctx);
}

void varda_spp_fill_header(vrd_spphdr_t *hdr, uint8_t type, const uint8_t *d, uint8_t d_len)
{
    hdr->start = SPP_START;
    hdr->pl_type = type;
    hdr->pl_len = d_len;
    hdr->crc = vrd_frame_crc(&hdr->pl_type, SPP_HEADER_LEN - 3, d, d_len);
}
