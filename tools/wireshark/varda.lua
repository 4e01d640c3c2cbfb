-- Dissector of the Varda toolbox captures (pcapng written by varda-toolbox
-- and glider-station):
--   link type 147 (USER0): bytes of the modem link, one SPP frame per packet,
--                          the bytes between frames in packets of their own;
--   link type 148 (USER1): one gateway message per packet, length included.
--
-- Install: copy this file to ~/.local/lib/wireshark/plugins/ (Wireshark and
-- tshark load it at start), or name it on the command line:
--   tshark -X lua_script:tools/wireshark/varda.lua -r FILE -V

local varda = Proto("varda", "Varda modem link")
local varda_gw = Proto("varda_gw", "Varda gateway message")

-- SPP frame, little-endian:
--   0 start 0x24 | 1 crc (CRC-16/X-25 over bytes 3..end) | 3 type | 4 len | 5 payload
local SPP_START = 0x24
local SPP_HEADER = 5
local spp_types = { [0] = "rx", [1] = "tx request", [2] = "local", [3] = "command" }
-- Receive header in front of a type-0 payload: toh_us (4), noise, rssi,
-- errors, flags; levels are dBm + 200, 255 = unknown.
local RX_HEADER = 8
local UNKNOWN_LEVEL = 255
local DBM_OFFSET = 200
-- Extension sub-packets: type (0..15), size, data; fixed sizes, -1 = variable.
local ext_names = { [0] = "data", "src", "stat", "simplehop", "pos", "toh", "dest", "cmd_req", "text",
    "request", "car_bat", "car_charge", "car_trip", "rx_src", "ipv4_src", "ipv6_src" }
local ext_sizes = { [0] = -1, 7, 22, 1, 17, 5, 6, -1, -1, 1, 4, 2, 10, 7, 4, 16 }
local EXT_SRC, EXT_DEST, EXT_TEXT = 1, 6, 8
-- Gateway message: tot_length (4, bytes after it), type (4), content.
local gw_types = { [420000] = "SBD TX request", [420001] = "Raw payload" }
local GW_SBD, GW_RAW = 420000, 420001
local IMEI_LEN, CALLSIGN_FIELD = 15, 11

local f = {
    kind = ProtoField.string("varda.kind", "Kind"),
    start = ProtoField.uint8("varda.start", "Start", base.HEX),
    crc = ProtoField.uint16("varda.crc", "CRC", base.HEX),
    crc_ok = ProtoField.bool("varda.crc_ok", "CRC right"),
    spp_type = ProtoField.uint8("varda.spp_type", "SPP type", base.DEC, spp_types),
    len = ProtoField.uint8("varda.len", "Payload length"),
    toh_us = ProtoField.uint32("varda.toh_us", "Time of hour (us)"),
    noise = ProtoField.int16("varda.noise", "Noise (dBm)"),
    rssi = ProtoField.int16("varda.rssi", "Signal (dBm)"),
    errors = ProtoField.uint8("varda.errors", "Corrected errors"),
    flags = ProtoField.uint8("varda.flags", "Flags", base.HEX),
    ext = ProtoField.bool("varda.flags.ext", "Extension sub-packets", 8, nil, 0x01),
    sub = ProtoField.uint8("varda.sub.type", "Sub-packet", base.DEC, ext_names),
    sub_size = ProtoField.uint8("varda.sub.size", "Size"),
    src = ProtoField.string("varda.src", "Source"),
    seq = ProtoField.uint8("varda.seq", "Sequence"),
    dest = ProtoField.string("varda.dest", "Destination"),
    text = ProtoField.string("varda.text", "Text"),
    data = ProtoField.bytes("varda.data", "Data"),
    noise_bytes = ProtoField.bytes("varda.noise_bytes", "Bytes between frames"),
    gw_len = ProtoField.uint32("varda.gw_len", "Length"),
    gw_type = ProtoField.uint32("varda.gw_type", "Gateway message type", base.DEC, gw_types),
    imei = ProtoField.string("varda.imei", "IMEI"),
    callsign = ProtoField.string("varda.callsign", "Callsign"),
    flush = ProtoField.uint8("varda.flush", "Flush queue"),
}
varda.fields = f

local e_crc = ProtoExpert.new("varda.crc_bad", "Bad CRC", expert.group.CHECKSUM, expert.severity.WARN)
local e_ext = ProtoExpert.new("varda.ext_bad", "Invalid sub-packet chain", expert.group.MALFORMED,
    expert.severity.WARN)
varda.experts = { e_crc, e_ext }

-- CRC-16/X-25: reflected 0x1021 (0x8408), preset 0xFFFF, complemented.
local crc_table = {}
for i = 0, 255 do
    local c = i
    for _ = 1, 8 do
        if bit32.band(c, 1) ~= 0 then
            c = bit32.bxor(bit32.rshift(c, 1), 0x8408)
        else
            c = bit32.rshift(c, 1)
        end
    end
    crc_table[i] = c
end

local function crc_x25(tvb, offset, len)
    local crc = 0xFFFF
    for i = offset, offset + len - 1 do
        crc = bit32.bxor(crc_table[bit32.band(bit32.bxor(crc, tvb(i, 1):uint()), 0xFF)], bit32.rshift(crc, 8))
    end
    return bit32.bxor(crc, 0xFFFF)
end

-- 6 bytes: two big-endian 24-bit groups of four 6-bit values, c0..c6 and
-- the SSID; a character is its value + 0x20, value 0 ends the callsign.
local function callsign(tvb)
    local values = {}
    for g = 0, 1 do
        local group = tvb(g * 3, 3):uint()
        for k = 3, 0, -1 do
            values[#values + 1] = bit32.band(bit32.rshift(group, 6 * k), 0x3F)
        end
    end
    local text = ""
    for i = 1, 7 do
        if values[i] == 0 then break end
        text = text .. string.char(values[i] + 0x20)
    end
    if values[8] ~= 0 then text = text .. "-" .. values[8] end
    return text
end

-- Number of valid sub-packets, 0 when the chain is invalid; a last one cut
-- short is not counted.
-- Text up to the first zero byte.
local function text_field(range)
    return range:string():match("^([^\0]*)")
end

local function count_subpackets(tvb)
    local at, n, len = 0, 0, tvb:len()
    while at + 2 <= len do
        local t, size = tvb(at, 1):uint(), tvb(at + 1, 1):uint()
        if at + 2 + size > len then return n end
        if t > 15 then return 0 end
        if ext_sizes[t] >= 0 and ext_sizes[t] ~= size then return 0 end
        n = n + 1
        at = at + 2 + size
    end
    return n
end

local function dissect_extension(tvb, pinfo, tree, summary)
    local count = count_subpackets(tvb)
    if count == 0 then
        if tvb:len() > 0 then tree:add_proto_expert_info(e_ext) end
        return
    end
    local at, names = 0, {}
    for _ = 1, count do
        local t, size = tvb(at, 1):uint(), tvb(at + 1, 1):uint()
        local sub = tree:add(f.sub, tvb(at, 2 + size), t)
        sub:append_text(" (" .. size .. " bytes)")
        sub:add(f.sub_size, tvb(at + 1, 1))
        names[#names + 1] = ext_names[t]
        local data = size > 0 and tvb(at + 2, size) or nil
        if t == EXT_SRC then
            local call = callsign(data(0, 6):tvb())
            sub:add(f.src, data(0, 6), call)
            sub:add(f.seq, data(6, 1))
            summary[#summary + 1] = call .. " #" .. data(6, 1):uint()
        elseif t == EXT_DEST then
            local call = callsign(data:tvb())
            sub:add(f.dest, data, call)
            summary[#summary + 1] = "to " .. call
        elseif t == EXT_TEXT and data then
            sub:add(f.text, data, data:string(ENC_ISO_8859_1))
        elseif data then
            sub:add(f.data, data)
        end
        at = at + 2 + size
    end
    summary[#summary + 1] = "ext(" .. table.concat(names, ", ") .. ")"
end

local function dissect_flags(tvb, tree)
    local item = tree:add(f.flags, tvb)
    item:add(f.ext, tvb)
    return bit32.band(tvb:uint(), 1) ~= 0
end

local function dissect_payload(ptype, tvb, pinfo, tree, summary)
    local len = tvb:len()
    if ptype == 0 and len >= RX_HEADER then
        tree:add_le(f.toh_us, tvb(0, 4))
        local noise, rssi = tvb(4, 1):uint(), tvb(5, 1):uint()
        if noise ~= UNKNOWN_LEVEL then tree:add(f.noise, tvb(4, 1), noise - DBM_OFFSET) end
        if rssi ~= UNKNOWN_LEVEL then
            tree:add(f.rssi, tvb(5, 1), rssi - DBM_OFFSET)
            summary[#summary + 1] = (rssi - DBM_OFFSET) .. " dBm"
        end
        tree:add(f.errors, tvb(6, 1))
        if dissect_flags(tvb(7, 1), tree) and len > RX_HEADER then
            dissect_extension(tvb(RX_HEADER):tvb(), pinfo, tree, summary)
        end
    elseif (ptype == 1 or ptype == 2) and len >= 1 then
        if dissect_flags(tvb(0, 1), tree) and len > 1 then
            dissect_extension(tvb(1):tvb(), pinfo, tree, summary)
        end
    elseif ptype == 3 and len > 0 then
        local text = tvb:string(ENC_ISO_8859_1)
        tree:add(f.text, tvb, text)
        summary[#summary + 1] = '"' .. text:gsub("[\r\n]+", " ") .. '"'
    end
end

-- A frame starts with the start byte and is exactly as long as its length
-- byte says; anything else in a packet is bytes between frames.
function varda.dissector(tvb, pinfo, tree)
    pinfo.cols.protocol = "Varda"
    local len = tvb:len()
    local root = tree:add(varda, tvb())
    if len <= SPP_HEADER or tvb(0, 1):uint() ~= SPP_START or len ~= SPP_HEADER + tvb(4, 1):uint() then
        root:add(f.kind, "noise")
        root:add(f.noise_bytes, tvb())
        pinfo.cols.info = "Bytes between frames (" .. len .. ")"
        return len
    end
    root:add(f.kind, "frame")
    root:add(f.start, tvb(0, 1))
    local crc_item = root:add_le(f.crc, tvb(1, 2))
    local ok = crc_x25(tvb, 3, len - 3) == tvb(1, 2):le_uint()
    root:add(f.crc_ok, ok)
    local ptype = tvb(3, 1):uint()
    root:add(f.spp_type, tvb(3, 1))
    root:add(f.len, tvb(4, 1))
    local summary = { "SPP " .. (spp_types[ptype] or tostring(ptype)) }
    if ok then
        dissect_payload(ptype, tvb(SPP_HEADER):tvb(), pinfo, root, summary)
    else
        crc_item:add_proto_expert_info(e_crc)
        summary[#summary + 1] = "bad CRC"
    end
    pinfo.cols.info = table.concat(summary, ", ")
    return len
end

-- Inbound packets (p2p_dir 1) of a raw payload carry an IMEI, outbound ones
-- a callsign.
function varda_gw.dissector(tvb, pinfo, tree)
    pinfo.cols.protocol = "Varda gateway"
    local len = tvb:len()
    local root = tree:add(varda, tvb(), "Varda gateway message")
    if len < 4 then return len end
    root:add_le(f.gw_len, tvb(0, 4))
    if len < 8 then return len end
    local gtype = tvb(4, 4):le_uint()
    root:add_le(f.gw_type, tvb(4, 4))
    local content = len > 8 and tvb(8):tvb() or nil
    local info = gw_types[gtype] or ("Type " .. gtype)
    if content and (gtype == GW_SBD or (gtype == GW_RAW and pinfo.p2p_dir ~= 0)) then
        local n = math.min(IMEI_LEN, content:len())
        local imei = text_field(content(0, n))
        root:add(f.imei, content(0, n), imei)
        if gtype == GW_SBD and content:len() > n then root:add(f.flush, content(n, 1)) end
        info = info .. ", IMEI " .. imei
    elseif content and gtype == GW_RAW then
        local n = math.min(CALLSIGN_FIELD, content:len())
        local call = text_field(content(0, n))
        root:add(f.callsign, content(0, n), call)
        info = info .. ", callsign " .. call
    end
    pinfo.cols.info = info .. " (" .. len .. " bytes)"
    return len
end

local encap = DissectorTable.get("wtap_encap")
encap:add(wtap_encaps.USER0, varda)
encap:add(wtap_encaps.USER1, varda_gw)
