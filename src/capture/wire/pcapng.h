#ifndef PCAPNG_H
#define PCAPNG_H

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <vector>

/*
 * Capture files are pcapng, little-endian, written by us as
 *
 *   Section Header, Interface Description per link, Enhanced Packet blocks
 *
 * Every block:
 *
 *   offset  width  field
 *   0       4      block type
 *   4       4      block total length (the whole block, both length fields
 *                  included; a multiple of 4)
 *   8       ...    body
 *   end-4   4      block total length again
 *
 * Section Header (type 0x0A0D0D0A), body:
 *   0  4  byte-order magic 0x1A2B3C4D (tells the byte order of the section)
 *   4  2  major version 1
 *   6  2  minor version 0
 *   8  8  section length, -1 = not given
 *   16 .. options: shb_userappl (4), the program that wrote the file
 *
 * Interface Description (type 0x00000001), one per link, numbered from 0 in
 * the order they appear; body:
 *   0  2  link type: 147 (USER0) modem link bytes, 148 (USER1) gateway
 *         messages
 *   2  2  reserved, 0
 *   4  4  snap length, 0 = no limit
 *   8  .. options: if_name (2), e.g. "tcp:127.0.0.1:10004"; if_tsresol (9)
 *         absent = microseconds
 *
 * Enhanced Packet (type 0x00000006), body:
 *   0  4  interface id
 *   4  4  timestamp, high 32 bits   (microseconds since 1970-01-01 UTC)
 *   8  4  timestamp, low 32 bits
 *   12 4  captured length
 *   16 4  original length (equal: nothing is cut)
 *   20 .. packet bytes, padded with zeros to a multiple of 4
 *   .. .. options: epb_flags (2), 4 bytes; bits 0-1 the direction,
 *         1 inbound, 2 outbound
 *
 * Options, back to back, ended by opt_endofopt (code 0, length 0):
 *   0  2  code
 *   2  2  value length
 *   4  .. value, padded with zeros to a multiple of 4
 */

enum pcapng_block_type_t : uint32_t {
    PCAPNG_SECTION_HEADER = 0x0A0D0D0A,
    PCAPNG_INTERFACE = 0x00000001,
    PCAPNG_SIMPLE_PACKET = 0x00000003,
    PCAPNG_ENHANCED_PACKET = 0x00000006,
};

enum pcapng_link_type_t : uint16_t {
    PCAPNG_LINK_MODEM = 147, /* USER0: bytes of the modem link */
    PCAPNG_LINK_GATEWAY = 148, /* USER1: whole gateway messages */
};

enum pcapng_direction_t : uint8_t { PCAPNG_DIR_UNKNOWN = 0, PCAPNG_DIR_IN = 1, PCAPNG_DIR_OUT = 2 };

static const uint32_t PCAPNG_BYTE_ORDER_MAGIC = 0x1A2B3C4D;
static const uint16_t PCAPNG_OPT_END = 0;
static const uint16_t PCAPNG_OPT_SHB_USERAPPL = 4;
static const uint16_t PCAPNG_OPT_IF_NAME = 2;
static const uint16_t PCAPNG_OPT_IF_TSRESOL = 9;
static const uint16_t PCAPNG_OPT_EPB_FLAGS = 2;
static const uint32_t PCAPNG_EPB_DIRECTION_MASK = 0x3;
static const size_t PCAPNG_BLOCK_OVERHEAD = 12; /* type, length, trailing length */
static const size_t PCAPNG_EPB_FIXED = 20; /* interface id .. original length */

/* Whole blocks, ready to be written; packets are appended to a buffer that
 * may already hold others. */
std::vector<uint8_t> pcapng_section_header(const std::string &application);
std::vector<uint8_t> pcapng_interface(uint16_t link_type, const std::string &name);
void pcapng_append_enhanced_packet(std::vector<uint8_t> *out, uint32_t interface_id, uint64_t time_us,
    pcapng_direction_t direction, const uint8_t *data, size_t len);

#endif
