-- Wireshark dissector for the CODESYS block protocol over TCP.
--
-- Put this file into the folder that Help > About Wireshark > Folders calls "Personal Lua Plugins",
-- or name it: tshark -X lua_script:plc_block.lua -r FILE
--
-- Connections are recognised by the frames' first bytes, BB BB 00 00, or by the port that the
-- protocol's preferences name. A reply does not say what it answers: it is taken for the oldest
-- unanswered request of its connection, as its client has to take it.

local protocol = Proto("codesys_block", "CODESYS Block Protocol")

local FRAME_MARK = 0xbbbb
local HEADER_SIZE = 6
local SERVICE_POSITION = 6 -- in requests; the status in replies
local CONTENT_POSITION = 8
local ENTRIES_POSITION = 12
local ENTRY_HEAD_SIZE = 10
local TRAILER_SIZE = 4
local FIXED_TRAILER = 0x0001
local INFO_BYTES_POSITION = 24 -- in the reply to the file request

local IDENTIFICATION = 0x01
local READ = 0x2e
local FILE_REQUEST = 0x31
local WRITE = 0x3c

local SERVICES = {
    [IDENTIFICATION] = "Identification",
    [READ] = "Read",
    [FILE_REQUEST] = "File request",
    [WRITE] = "Write",
}

-- Clients take a login reply with a shorter payload for a refusal.
local SMALLEST_LOGIN_PAYLOAD = {[IDENTIFICATION] = 200, [FILE_REQUEST] = 30}

local fields = {
    magic = ProtoField.uint16("codesys_block.magic", "Magic", base.HEX),
    length = ProtoField.uint32("codesys_block.length", "Payload length"),
    reply = ProtoField.bool("codesys_block.reply", "Reply"),
    service = ProtoField.uint8("codesys_block.service", "Service", base.HEX, SERVICES),
    reserved = ProtoField.uint8("codesys_block.reserved", "Reserved", base.HEX),
    status = ProtoField.uint16("codesys_block.status", "Status", base.HEX, {[0] = "Good"}),
    parameters = ProtoField.bytes("codesys_block.parameters", "Parameters"),
    name_length = ProtoField.uint16("codesys_block.file_name_length", "File name length"),
    name = ProtoField.stringz("codesys_block.file_name", "File name"),
    count = ProtoField.uint32("codesys_block.entries", "Entries"),
    entry = ProtoField.none("codesys_block.entry", "Entry"),
    area = ProtoField.uint16("codesys_block.entry.area", "Area index"),
    address = ProtoField.uint32("codesys_block.entry.address", "Address", base.DEC_HEX),
    bit_address = ProtoField.uint32("codesys_block.entry.bit_address", "Bit address",
        base.DEC_HEX),
    entry_length = ProtoField.uint32("codesys_block.entry.length", "Length"),
    lead = ProtoField.uint8("codesys_block.entry.lead", "Leading byte", base.HEX),
    value = ProtoField.bytes("codesys_block.entry.value", "Value"),
    trailer = ProtoField.uint16("codesys_block.trailer", "Trailer", base.HEX),
    info1 = ProtoField.uint8("codesys_block.info1", "PLC info byte 1", base.HEX),
    info2 = ProtoField.uint8("codesys_block.info2", "PLC info byte 2", base.HEX),
    data = ProtoField.bytes("codesys_block.data", "Data"),
    request_in = ProtoField.framenum("codesys_block.request_in", "Reply to the request in frame",
        base.NONE, frametype.REQUEST),
    reply_in = ProtoField.framenum("codesys_block.reply_in", "Reply in frame", base.NONE,
        frametype.RESPONSE),
    time = ProtoField.relative_time("codesys_block.time", "Time since the request"),
}
protocol.fields = fields

local function new_expert(name, text, group, severity)
    return ProtoExpert.new("codesys_block.expert." .. name, text, group, severity)
end

local experts = {
    refused = new_expert("refused", "The PLC refused the request", expert.group.RESPONSE_CODE,
        expert.severity.ERROR),
    login_refused = new_expert("login_refused", "The reply is too short for a login",
        expert.group.RESPONSE_CODE, expert.severity.ERROR),
    no_magic = new_expert("no_magic", "These bytes do not begin a frame", expert.group.MALFORMED,
        expert.severity.ERROR),
    length = new_expert("length", "The content does not fit the frame", expert.group.MALFORMED,
        expert.severity.ERROR),
    high_length = new_expert("high_length", "Clients read the low half of the payload length only",
        expert.group.PROTOCOL, expert.severity.WARN),
    fixed_byte = new_expert("fixed_byte", "A fixed byte is different", expert.group.PROTOCOL,
        expert.severity.WARN),
    info_bytes = new_expert("info_bytes", "These are not the bytes of this connection's login",
        expert.group.PROTOCOL, expert.severity.WARN),
    service = new_expert("service", "Unknown service", expert.group.UNDECODED, expert.severity.WARN),
    early = new_expert("early", "Sent before the request ahead of it was answered",
        expert.group.SEQUENCE, expert.severity.WARN),
    no_reply = new_expert("no_reply", "No reply in this capture", expert.group.SEQUENCE,
        expert.severity.WARN),
    no_request = new_expert("no_request", "No request in this capture that this would answer",
        expert.group.SEQUENCE, expert.severity.WARN),
}
protocol.experts = experts

protocol.prefs.ports = Pref.range("TCP ports", "",
    "Ports of PLCs; connections to others are recognised by their first bytes", 65535)

-- What the first pass finds out. A frame can hold several protocol frames: they are known by their
-- packet and place.
local connections -- by TCP stream: the client's end, its unanswered requests, its login
local requests -- by place
local answered -- by the reply's place: the request; false where there is none

function protocol.init()
    connections = {}
    requests = {}
    answered = {}
end

local tcp_stream = Field.new("tcp.stream")
local time_epoch = Field.new("frame.time_epoch")

local function place_of(tvb, pinfo)
    return pinfo.number .. ":" .. tvb:offset() .. ":" .. tvb:len()
end

local function endpoint(address, port)
    return tostring(address) .. " " .. port
end

local function is_plc_port(port)
    for first, last in protocol.prefs.ports:gmatch("(%d+)%-?(%d*)") do
        if port >= tonumber(first) and port <= (tonumber(last) or tonumber(first)) then
            return true
        end
    end
    return false
end

local function is_known_request(tvb)
    return tvb:len() >= CONTENT_POSITION and SERVICES[tvb(SERVICE_POSITION, 1):uint()] ~= nil and
        tvb(SERVICE_POSITION + 1, 1):uint() == 0
end

-- The port tells which end is the client; where it does not, the first frame does.
local function comes_from_client(tvb, pinfo)
    local from_plc_port, to_plc_port = is_plc_port(pinfo.src_port), is_plc_port(pinfo.dst_port)
    if from_plc_port ~= to_plc_port then
        return to_plc_port
    end
    return is_known_request(tvb)
end

local function connection_of(tvb, pinfo)
    local stream = tcp_stream().value
    local connection = connections[stream]
    if not connection then
        connection = {unanswered = {}}
        if comes_from_client(tvb, pinfo) then
            connection.client = endpoint(pinfo.src, pinfo.src_port)
        else
            connection.client = endpoint(pinfo.dst, pinfo.dst_port)
        end
        connections[stream] = connection
    end
    return connection
end

-- How many of a thing, in words: "1 byte", "2 bytes", "1 entry", "0 entries".
local function count_text(count, one, many)
    return string.format("%.0f %s", count, count == 1 and one or many)
end

local function bytes_text(count)
    return count_text(count, "byte", "bytes")
end

-- Entries ---------------------------------------------------------------------------------------

-- An entry as its request states it; `size` is the number of its value bytes.
local function entry_at(tvb, position)
    return {
        position = position,
        area = tvb(position, 2):uint(),
        address = tvb(position + 2, 4):uint(),
        length = tvb(position + 6, 4):uint(),
    }
end

-- The entries that lie before `stop`, and where the last one ends. `size_of` gives the number of an
-- entry's value bytes in the frame.
local function walk_entries(tvb, count, stop, size_of)
    local entries, position = {}, ENTRIES_POSITION
    while #entries < count and position + ENTRY_HEAD_SIZE <= stop do
        local entry = entry_at(tvb, position)
        entry.size = size_of(entry)
        if position + ENTRY_HEAD_SIZE + entry.size > stop then
            break
        end
        entries[#entries + 1] = entry
        position = position + ENTRY_HEAD_SIZE + entry.size
    end
    return entries, position
end

local function read_entries(tvb, count, stop)
    local entries, position = walk_entries(tvb, count, stop, function() return 0 end)
    for _, entry in ipairs(entries) do
        entry.size = entry.length % 0x10000 -- more is never stored
    end
    return entries, position
end

-- In a request that begins with a bit all entries state the length 0 and carry their bytes
-- nevertheless: how many is told from the size of the frame, if all have equally many.
local function bit_entries(tvb, count, stop)
    local values = stop - ENTRIES_POSITION - count * ENTRY_HEAD_SIZE
    if count == 0 or values <= 0 or values % count ~= 0 then
        return nil
    end
    local entries, position = walk_entries(tvb, count, stop,
        function() return values / count end)
    for _, entry in ipairs(entries) do
        if entry.length ~= 0 then
            return nil
        end
        entry.is_bit = true
    end
    return entries, position
end

local function write_entries(tvb, count, stop)
    local entries, position = bit_entries(tvb, count, stop)
    if entries then
        return entries, position
    end
    return walk_entries(tvb, count, stop, function(entry) return entry.length end)
end

local function entry_text(number, entry)
    local place = string.format("Entry %d: area %d, %s %.0f (0x%08x), ", number, entry.area,
        entry.is_bit and "bit" or "address", entry.address, entry.address)
    return place .. bytes_text(entry.is_bit and entry.size or entry.length)
end

local function add_entry_place(tree, entry, range)
    local address = entry.is_bit and fields.bit_address or fields.address
    if range then
        tree:add(fields.area, range(0, 2))
        tree:add(address, range(2, 4))
        tree:add(fields.entry_length, range(6, 4))
    else
        tree:add(fields.area, entry.area):set_generated()
        tree:add(address, entry.address):set_generated()
        tree:add(fields.entry_length, entry.length):set_generated()
    end
end

local function add_value(entry_tree, range)
    entry_tree:add(fields.value, range)
    entry_tree:append_text(": " .. tostring(range:bytes()):lower())
end

local function add_request_entry(tree, tvb, number, entry, carries_value)
    local size = ENTRY_HEAD_SIZE + (carries_value and entry.size or 0)
    local range = tvb(entry.position, size)
    local entry_tree = tree:add(fields.entry, range):set_text(entry_text(number, entry))
    add_entry_place(entry_tree, entry, range)
    if carries_value and entry.size > 0 then
        add_value(entry_tree, range(ENTRY_HEAD_SIZE, entry.size))
    end
end

local function total_size(entries)
    local total = 0
    for _, entry in ipairs(entries) do
        total = total + entry.size
    end
    return total
end

-- Requests --------------------------------------------------------------------------------------

local function add_rest(tree, tvb, position, stop)
    if position < stop then
        tree:add(fields.data, tvb(position, stop - position))
    end
end

local function add_trailer(tree, tvb, position, login)
    local trailer = tree:add(fields.trailer, tvb(position, 2))
    if tvb(position, 2):uint() ~= FIXED_TRAILER then
        trailer:add_proto_expert_info(experts.fixed_byte)
    end
    local info1 = tree:add(fields.info1, tvb(position + 2, 1))
    tree:add(fields.info2, tvb(position + 3, 1))
    if login and login ~= tvb(position + 2, 2):uint() then
        info1:add_proto_expert_info(experts.info_bytes, string.format(
            "The login of this connection gave the info bytes 0x%04x", login))
    end
end

-- Reads and writes: entries and the trailer.
local function dissect_entries_request(tree, tvb, request, parse, carries_value)
    local stop = tvb:len() - TRAILER_SIZE
    if stop < ENTRIES_POSITION then
        tree:add_proto_expert_info(experts.length, "The request ends before its trailer")
        add_rest(tree, tvb, CONTENT_POSITION, tvb:len())
        return SERVICES[request.service]
    end
    local count = tvb(CONTENT_POSITION, 4):uint()
    local count_item = tree:add(fields.count, tvb(CONTENT_POSITION, 4))
    local entries, position = parse(tvb, count, stop)
    for index, entry in ipairs(entries) do
        add_request_entry(tree, tvb, index - 1, entry, carries_value)
    end
    if #entries ~= count or position ~= stop then
        count_item:add_proto_expert_info(experts.length, string.format(
            "%s announced, %d of them fit, and %s remain", count_text(count, "entry", "entries"),
            #entries, bytes_text(stop - position)))
    end
    add_rest(tree, tvb, position, stop)
    add_trailer(tree, tvb, stop, request.login)
    request.entries = entries
    return string.format("%s %s, %s", SERVICES[request.service],
        count_text(count, "entry", "entries"), bytes_text(total_size(entries)))
end

local dissect_request_content = {
    [IDENTIFICATION] = function(tree, tvb)
        if tvb:len() > CONTENT_POSITION then
            tree:add(fields.parameters, tvb(CONTENT_POSITION))
        end
        return "Identification"
    end,
    [FILE_REQUEST] = function(tree, tvb)
        local name_position = CONTENT_POSITION + 2
        if tvb:len() < name_position then
            tree:add_proto_expert_info(experts.length, "The request ends before the file name")
            return "File request"
        end
        local length = tvb(CONTENT_POSITION, 2):uint()
        local item = tree:add(fields.name_length, tvb(CONTENT_POSITION, 2))
        if name_position + length ~= tvb:len() or length == 0 then
            item:add_proto_expert_info(experts.length, string.format(
                "A name of %s is announced, %s follow", bytes_text(length),
                bytes_text(tvb:len() - name_position)))
            add_rest(tree, tvb, name_position, tvb:len())
            return "File request"
        end
        tree:add(fields.name, tvb(name_position, length))
        return "File request " .. tvb(name_position, length):stringz()
    end,
    [READ] = function(tree, tvb, request)
        return dissect_entries_request(tree, tvb, request, read_entries, false)
    end,
    [WRITE] = function(tree, tvb, request)
        return dissect_entries_request(tree, tvb, request, write_entries, true)
    end,
}

local function remember_request(tvb, pinfo, connection)
    local place = place_of(tvb, pinfo)
    if not requests[place] then
        local unanswered = connection.unanswered
        requests[place] = {
            frame = pinfo.number,
            time = time_epoch().value,
            service = tvb(SERVICE_POSITION, 1):uint(),
            login = connection.login,
            is_early = #unanswered > 0,
        }
        unanswered[#unanswered + 1] = requests[place]
    end
    return requests[place]
end

local function dissect_request(tree, tvb, pinfo, connection)
    local request = remember_request(tvb, pinfo, connection)
    tree:add(fields.reply, false):set_generated()
    local service = tree:add(fields.service, tvb(SERVICE_POSITION, 1))
    local reserved = tree:add(fields.reserved, tvb(SERVICE_POSITION + 1, 1))
    if tvb(SERVICE_POSITION + 1, 1):uint() ~= 0 then
        reserved:add_proto_expert_info(experts.fixed_byte)
    end
    if request.is_early then
        tree:add_proto_expert_info(experts.early)
    end
    if request.reply_frame then
        tree:add(fields.reply_in, request.reply_frame):set_generated()
    elseif pinfo.visited then
        tree:add_proto_expert_info(experts.no_reply)
    end
    local dissect_content = dissect_request_content[request.service]
    if dissect_content then
        return dissect_content(tree, tvb, request)
    end
    service:add_proto_expert_info(experts.service)
    add_rest(tree, tvb, CONTENT_POSITION, tvb:len())
    return string.format("Unknown service 0x%02x", request.service)
end

-- Replies ---------------------------------------------------------------------------------------

local function dissect_read_reply(tree, tvb, request)
    local position = ENTRIES_POSITION
    if tvb:len() < position then
        tree:add_proto_expert_info(experts.length, "The reply ends before its first block")
        add_rest(tree, tvb, CONTENT_POSITION, tvb:len())
        return
    end
    tree:add(fields.data, tvb(CONTENT_POSITION, position - CONTENT_POSITION))
    for index, entry in ipairs(request.entries or {}) do
        local block_size = 1 + entry.size
        if position + block_size > tvb:len() then
            tree:add_proto_expert_info(experts.length, string.format(
                "The reply ends within the block of entry %d", index - 1))
            break
        end
        local range = tvb(position, block_size)
        local entry_tree = tree:add(fields.entry, range):set_text(entry_text(index - 1, entry))
        add_entry_place(entry_tree, entry)
        entry_tree:add(fields.lead, range(0, 1))
        if entry.size > 0 then
            add_value(entry_tree, range(1, entry.size))
        end
        position = position + block_size
        if index == #request.entries and position < tvb:len() then
            tree:add_proto_expert_info(experts.length, bytes_text(tvb:len() - position) ..
                " behind the block of the last entry")
        end
    end
    add_rest(tree, tvb, position, tvb:len())
end

local function dissect_login_reply(tree, tvb, request)
    local stop = tvb:len()
    if request.service ~= FILE_REQUEST or stop < INFO_BYTES_POSITION + 2 then
        add_rest(tree, tvb, CONTENT_POSITION, stop)
        return
    end
    tree:add(fields.data, tvb(CONTENT_POSITION, INFO_BYTES_POSITION - CONTENT_POSITION))
    tree:add(fields.info2, tvb(INFO_BYTES_POSITION, 1))
    tree:add(fields.info1, tvb(INFO_BYTES_POSITION + 1, 1))
    add_rest(tree, tvb, INFO_BYTES_POSITION + 2, stop)
end

local function is_refused(tvb)
    return tvb:len() >= CONTENT_POSITION and tvb(SERVICE_POSITION, 2):uint() ~= 0
end

-- Later requests of the connection end in these two bytes, the second one first.
local function remember_login(tvb, request, connection)
    if request.service == FILE_REQUEST and
        tvb:len() >= HEADER_SIZE + SMALLEST_LOGIN_PAYLOAD[FILE_REQUEST] then
        connection.login = tvb(INFO_BYTES_POSITION + 1, 1):uint() * 0x100 +
            tvb(INFO_BYTES_POSITION, 1):uint()
    end
end

local function request_of_reply(tvb, pinfo, connection)
    local place = place_of(tvb, pinfo)
    if answered[place] == nil then
        local request = table.remove(connection.unanswered, 1)
        if request then
            request.reply_frame = pinfo.number
            request.reply_time = time_epoch().value - request.time
            remember_login(tvb, request, connection)
        end
        answered[place] = request or false
    end
    return answered[place]
end

local function dissect_reply(tree, tvb, pinfo, connection)
    local request = request_of_reply(tvb, pinfo, connection)
    tree:add(fields.reply, true):set_generated()
    local status = tree:add(fields.status, tvb(SERVICE_POSITION, 2))
    if request then
        tree:add(fields.service, request.service):set_generated()
        tree:add(fields.request_in, request.frame):set_generated()
        tree:add(fields.time, request.reply_time):set_generated()
    else
        tree:add_proto_expert_info(experts.no_request)
    end
    local name = request and SERVICES[request.service] or "Unknown"
    local smallest_payload = request and SMALLEST_LOGIN_PAYLOAD[request.service] or 0
    if is_refused(tvb) then
        local text = string.format("%s refused, status 0x%04x", name,
            tvb(SERVICE_POSITION, 2):uint())
        status:add_proto_expert_info(experts.refused, text)
        add_rest(tree, tvb, CONTENT_POSITION, tvb:len())
        return text
    elseif tvb:len() < HEADER_SIZE + smallest_payload then
        tree:add_proto_expert_info(experts.login_refused, string.format(
            "A login reply has a payload of at least %s", bytes_text(smallest_payload)))
        dissect_login_reply(tree, tvb, request)
        return name .. " refused, the reply is too short"
    elseif smallest_payload > 0 then
        dissect_login_reply(tree, tvb, request)
    elseif request and request.service == READ then
        dissect_read_reply(tree, tvb, request)
        return "Read reply, " .. bytes_text(total_size(request.entries or {}))
    else
        add_rest(tree, tvb, CONTENT_POSITION, tvb:len())
    end
    return name .. " reply"
end

-- Frames ----------------------------------------------------------------------------------------

local function dissect_frame_content(tree, tvb, pinfo)
    if tvb(0, 2):uint() ~= FRAME_MARK then
        tree:add_proto_expert_info(experts.no_magic)
        tree:add(fields.data, tvb())
        return "No frame"
    end
    tree:add(fields.magic, tvb(0, 2))
    local length = tree:add(fields.length, tvb(2, 4))
    if tvb(2, 2):uint() ~= 0 then
        length:add_proto_expert_info(experts.high_length)
    end
    if tvb:len() < CONTENT_POSITION then
        tree:add_proto_expert_info(experts.length, "The frame has neither service nor status")
        add_rest(tree, tvb, HEADER_SIZE, tvb:len())
        return "Frame without service and status"
    end
    local connection = connection_of(tvb, pinfo)
    if connection.client == endpoint(pinfo.src, pinfo.src_port) then
        return dissect_request(tree, tvb, pinfo, connection)
    end
    return dissect_reply(tree, tvb, pinfo, connection)
end

-- A packet can hold several frames.
local function add_info(pinfo, text)
    if pinfo.private.codesys_block then
        pinfo.cols.info:append("; " .. text)
    else
        pinfo.cols.info = text
        pinfo.private.codesys_block = "info"
    end
    pinfo.cols.info:fence()
end

local function dissect_frame(tvb, pinfo, root)
    local tree = root:add(protocol, tvb())
    local text = dissect_frame_content(tree, tvb, pinfo)
    tree:append_text(", " .. text)
    add_info(pinfo, text)
    return tvb:len()
end

-- Where the bytes at `offset` do not begin a frame, the next one may begin at the next BB BB.
local function bytes_to_next_frame(tvb, offset)
    local remaining = tvb:len() - offset
    for skipped = 1, remaining - 2 do
        if tvb(offset + skipped, 2):uint() == FRAME_MARK then
            return skipped
        end
    end
    return remaining
end

local function frame_size(tvb, _, offset)
    if tvb(offset, 2):uint() ~= FRAME_MARK then
        return bytes_to_next_frame(tvb, offset)
    end
    return HEADER_SIZE + tvb(offset + 4, 2):uint()
end

function protocol.dissector(tvb, pinfo, tree)
    pinfo.cols.protocol = "CODESYS"
    dissect_tcp_pdus(tvb, tree, HEADER_SIZE, frame_size, dissect_frame)
    return tvb:len()
end

protocol:register_heuristic("tcp", function(tvb, pinfo, tree)
    if tvb:len() < 4 or tvb(0, 2):uint() ~= FRAME_MARK or tvb(2, 2):uint() ~= 0 then
        return false
    end
    pinfo.conversation = protocol
    protocol.dissector(tvb, pinfo, tree)
    return true
end)

local tcp_ports = DissectorTable.get("tcp.port")
local registered_ports = ""

function protocol.prefs_changed()
    if registered_ports ~= protocol.prefs.ports then
        if registered_ports ~= "" then
            tcp_ports:remove(registered_ports, protocol)
        end
        registered_ports = protocol.prefs.ports
        if registered_ports ~= "" then
            tcp_ports:add(registered_ports, protocol)
        end
    end
end

tcp_ports:add_for_decode_as(protocol)
