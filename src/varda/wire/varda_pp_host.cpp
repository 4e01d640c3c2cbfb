#include "varda_pp_host.h"

#include "varda_frame_rx.h"

void varda_pp_init(varda_pp_ctx_t *ctx, varda_pp_data_cb_t data_cb)
{
    ctx->d_len = 0;
    ctx->d_target = 0;
    ctx->counters.bad_crc = 0;
    ctx->counters.dropped = 0;
    ctx->state = VRD_FRAME_START;
    ctx->data_cb = data_cb;
}

static void pp_frame_complete(varda_pp_ctx_t *ctx)
{
    if (vrd_frame_check(ctx->d, ctx->d_len, &ctx->counters) && ctx->data_cb)
        ctx->data_cb(ctx->d + PP_HEADER_LEN, (uint16_t)(ctx->d_len - PP_HEADER_LEN));
}

void varda_pp_parse(varda_pp_ctx_t *ctx, uint8_t byte)
{
    if (vrd_frame_rx_byte(
            &VARDA_PP_FORMAT, ctx->d, &ctx->d_len, &ctx->d_target, &ctx->state, &ctx->counters.dropped, byte))
        pp_frame_complete(ctx);
}

void varda_pp_fill_header(vrd_pphdr_t *hdr, const uint8_t *d, uint8_t d_len)
{
    hdr->start = PP_START;
    hdr->pl_len = d_len;
    hdr->crc = vrd_frame_crc(&hdr->pl_len, PP_HEADER_LEN - 3, d, d_len);
}
