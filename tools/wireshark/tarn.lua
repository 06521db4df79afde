-- Wireshark and tshark: recorded conversations of the camera finder, field by field.
--
--     tshark -X lua_script:tarn.lua -r CAPTURE -Y 'tarn.mac == "00:40:8C:12:34:56"'
--
-- Put this file into Wireshark's folder for personal Lua plugins, or name it with -X lua_script:. Recordings have the
-- link type USER0 (147). docs/capture.md describes the packets; the numbers here are those of capture/format.h, of
-- src/valuelist/variant_types.h and, in src/protocol/, of block_format.h, finder_messages.h and record_format.h.
-- Filters: tarn.function, tarn.mac, tarn.ip, tarn.entry.name, tarn.dropped, tarn.damage, …

local tarn = Proto("tarn", "Camera finder conversation")

local FUNCTIONS = {
  [0] = "TarnServer_CreateLiveStream", [1] = "TarnLiveStream_Open", [2] = "TarnLiveStream_Start",
  [3] = "TarnLiveStream_SetGenericDataCallback", [4] = "TarnLiveStream_SendSynchDSPCommand",
  [5] = "TarnDBI_ReleaseReference", [6] = "TarnLiveStream_Destroy", [7] = "TarnDBIGetLastError",
}
local EVENTS = { [0] = "call", [1] = "block", [2] = "delivered", [3] = "detach" }
local DIRECTIONS = { [0] = "to the platform library", [1] = "to the finder" }
local PARTS = { [1] = "arguments", [2] = "request", [3] = "reply", [4] = "block", [5] = "error record" }
local TYPES = {
  [0] = "vtBool", "vtChar", "vtUChar", "vtSChar", "vtShort", "vtUShort", "vtUInt", "vtInt", "vtInt64", "vtFloat",
  "vtDouble", "vtString", "vtWString", "vtBinaryData", "vtBlobPtr", "vtFileTime", "vtDateTime", "vtReferencePointer",
  "vtGuid", "vtLong", "vtUInt64",
}
local SIZES = { [0] = 1, 1, 1, 1, 2, 2, 4, 4, 8, 4, 8, -1, -1, -1, -1, 8, 8, 8, 16, 4, 8 }
local SIGNED = { [1] = true, [3] = true, [4] = true, [7] = true, [8] = true, [19] = true }
local MESSAGES = {
  "picture", "values", "camera, kind 3", "camera, kind 1", "camera, kind 0", "camera, kind 2",
  "assembled camera, kind 3", "camera by address, kind 4",
}
local CHUNKS = {
  [0] = "end", "records, type 3", "records, type 4", "records, type 5", "records, type 6", "text", "picture", "values",
  "IP address", "vendor", "plug-in name", [12] = "CTT",
}
local COMMANDS = {
  [1] = "hardware address", [2] = "list cameras", [3] = "camera list", [6] = "info by IP", [13] = "bare",
  [14] = "set network",
}
local HEADER_SIZE, LIST_MARKER, DEEPEST = 48, 0x424345FF, 8

local f = {
  version = ProtoField.uint8("tarn.version", "Version"),
  event = ProtoField.uint8("tarn.event", "Event", base.DEC, EVENTS),
  fn = ProtoField.string("tarn.function", "Function"),
  direction = ProtoField.uint8("tarn.direction", "Direction", base.DEC, DIRECTIONS),
  result = ProtoField.uint8("tarn.result", "Result"),
  flags = ProtoField.uint16("tarn.flags", "Flags", base.HEX),
  thread = ProtoField.uint32("tarn.thread", "Thread"),
  message = ProtoField.uint32("tarn.message_type", "Message type", base.DEC, MESSAGES),
  duration = ProtoField.uint64("tarn.duration", "Duration in ns"),
  stream = ProtoField.uint64("tarn.stream", "Stream", base.HEX),
  body_size = ProtoField.uint64("tarn.body_size", "Body size"),
  body_offset = ProtoField.uint64("tarn.body_offset", "Offset in the body"),
  part = ProtoField.uint32("tarn.part", "Part", base.DEC, PARTS),
  argument = ProtoField.uint64("tarn.argument", "Argument", base.HEX),
  kind = ProtoField.uint64("tarn.block_kind", "Block kind"),
  code = ProtoField.uint32("tarn.request_code", "Request code", base.HEX),
  command = ProtoField.uint32("tarn.command", "Command", base.DEC, COMMANDS),
  base64 = ProtoField.bytes("tarn.base64", "Base64 text"),
  list = ProtoField.string("tarn.list", "Value list"),
  name = ProtoField.string("tarn.entry.name", "Entry"),
  type = ProtoField.uint8("tarn.entry.type", "Type", base.DEC, TYPES),
  value = ProtoField.string("tarn.entry.value", "Value"),
  mac = ProtoField.string("tarn.mac", "Hardware address"),
  ip = ProtoField.string("tarn.ip", "IP address"),
  chunk = ProtoField.uint32("tarn.chunk", "Chunk", base.DEC, CHUNKS),
  chunk_length = ProtoField.uint64("tarn.chunk.length", "Length"),
  text = ProtoField.string("tarn.text", "Text"),
  ctt = ProtoField.uint8("tarn.ctt", "CTT"),
  picture = ProtoField.bytes("tarn.picture", "Picture"),
  element = ProtoField.uint64("tarn.element", "Element"),
  raw = ProtoField.bytes("tarn.raw", "Bytes"),
  error_class = ProtoField.uint32("tarn.error.class", "Error class"),
  error_code = ProtoField.uint32("tarn.error.code", "Error code"),
  error_text = ProtoField.string("tarn.error.text", "Error text"),
  damage = ProtoField.string("tarn.damage", "Damage"),
  dropped = ProtoField.string("tarn.dropped", "Dropped by the finder"),
}
tarn.fields = f

-- What earlier packets tell of later ones; filled while the file is read the first time.
local pending, whole, detached, detached_at = {}, {}, {}, {}

function tarn.init()
  pending, whole, detached, detached_at = {}, {}, {}, {}
end

-- The kind of error that ends a part in which something is missing or wrong.
local Damage = {}

local function fail(cursor, tree, expected, found)
  local text = string.format("offset %d: expected %s, found %s", cursor.at, expected, tostring(found))
  tree:add(f.damage, text)
  error(setmetatable({ text = text }, Damage))
end

-- A cursor over a part of a buffer.
local function cursor_of(tvb, from, to)
  return { tvb = tvb, at = from or 0, stop = to or tvb:len() }
end

local function left(cursor)
  return cursor.stop - cursor.at
end

-- Adds a text with the bytes that it covers, which Wireshark marks. range: nil where there are none.
local function add_text(tree, field, range, text)
  return range and tree:add(field, range, text) or tree:add(field, text)
end

local function take(cursor, tree, size, what)
  if size > left(cursor) then fail(cursor, tree, string.format("%s, %d bytes", what, size), left(cursor)) end
  local range = cursor.tvb(cursor.at, size)
  cursor.at = cursor.at + size
  return range
end

-- Runs a part whose end is known; damage ends no more than this part. Returns the damage's text.
local function contained(body)
  local ok, problem = pcall(body)
  if ok then return nil end
  if getmetatable(problem) ~= Damage then error(problem, 0) end
  return problem.text
end

-- A 64-bit length as a number; one beyond 2^53 is larger than anything there is.
local function length_of(range)
  local number = range:le_uint64()
  return number:higher() >= 0x200000 and 2 ^ 53 or number:tonumber()
end

local function text_of(range, tag)
  if tag == 11 then return range:len() > 1 and range(0, range:len() - 1):string(ENC_UTF_8) or "" end
  local units = math.floor(range:len() / 2) - 1
  return units > 0 and range(0, 2 * units):le_ustring() or ""
end

local function value_of(range, tag)
  if not range then return "" end
  if tag == 0 then return range:uint() ~= 0 and "true" or "false" end
  if tag == 11 or tag == 12 then return text_of(range, tag) end
  if tag == 9 or tag == 10 then return string.format("%.17g", range:le_float()) end
  if tag == 13 or tag == 14 or tag == 18 then return range:bytes():tohex(true) end
  if SIGNED[tag] then return tostring(range:len() == 8 and range:le_int64() or range:le_int()) end
  return tostring(range:len() == 8 and range:le_uint64() or range:le_uint())
end

local list, elements -- below: lists stand in lists

-- A variant record. Returns the range of its payload, nil where that is empty, and its tag.
local function record(cursor, tree, seen, depth)
  local tag = take(cursor, tree, 1, "a type"):uint()
  local size = SIZES[tag]
  if not size then
    fail(cursor, tree, "a type below 21", tag)
  end
  if size < 0 then size = take(cursor, tree, 4, "a length"):le_uint() end
  local least = tag == 11 and 1 or tag == 12 and 2 or 0
  if size < least then fail(cursor, tree, "room for a terminator", size) end
  if size == 0 then return nil, tag end
  if tag == 13 and depth and size > left(cursor) then
    -- The elements that are there tell which camera was meant.
    local there = left(cursor)
    if there >= 8 and cursor.tvb(cursor.at, 4):le_uint() == LIST_MARKER then
      elements(cursor.tvb(cursor.at, there), cursor, tree, seen, depth)
      cursor.at = cursor.stop
    end
    fail(cursor, tree, string.format("%s, %d bytes", TYPES[tag], size), there)
  end
  return take(cursor, tree, size, TYPES[tag]), tag
end

-- The elements of a list in binary data; damage ends no more than these.
elements = function(range, cursor, tree, seen, depth)
  local inner = cursor_of(cursor.tvb, range:offset() + 8, range:offset() + range:len())
  local damage = contained(function()
    for i = 1, range(4, 4):le_uint() do
      if left(inner) == 0 then fail(inner, tree, "element " .. i, "the end") end
      list(inner, tree, seen, depth + 1)
    end
  end)
  seen.damage = seen.damage or damage
end

local function entry(cursor, tree, seen, depth)
  local name_range, name_tag = record(cursor, tree)
  local name = value_of(name_range, name_tag)
  local branch = add_text(tree, f.name, name_range, name)
  if left(cursor) > 0 and SIZES[cursor.tvb(cursor.at, 1):uint()] then branch:add(f.type, cursor.tvb(cursor.at, 1)) end
  local range, tag = record(cursor, branch, seen, depth < DEEPEST and depth or nil)
  local is_list = tag == 13 and depth < DEEPEST and range and range:len() >= 8 and range(0, 4):le_uint() == LIST_MARKER
  if is_list then
    elements(range, cursor, branch, seen, depth)
    return
  end
  local value = value_of(range, tag)
  add_text(branch, f.value, range, value)
  branch:append_text(" = " .. value:sub(1, 80))
  if name == "MAC" then
    add_text(branch, f.mac, range, value)
    seen.mac = seen.mac or value
  elseif name == "IP" or name == "GetInfoByIp" then
    add_text(branch, f.ip, range, value)
  elseif name == "CMD" and tag == 6 then
    branch:add_le(f.command, range)
    seen.command = COMMANDS[range:le_uint()]
  end
end

list = function(cursor, tree, seen, depth)
  local start = cursor.at
  local mark = take(cursor, tree, 4, '"VLIS"')
  if mark:string() ~= "VLIS" then
    cursor.at = start
    fail(cursor, tree, '"VLIS"', mark:bytes():tohex(true))
  end
  local name_range, name_tag = record(cursor, tree)
  local name = value_of(name_range, name_tag)
  local branch = tree:add(f.list, mark, name)
  local count = take(cursor, branch, 4, "the number of entries"):le_uint()
  branch:append_text(", " .. count .. " entries")
  for i = 1, count do
    if left(cursor) == 0 then fail(cursor, branch, "entry " .. i .. " of " .. count, "the end") end
    entry(cursor, branch, seen, depth)
  end
  branch:set_len(cursor.at - start)
end

local BASE64 = {}
for i = 1, 64 do
  BASE64[("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"):byte(i)] = i - 1
end

-- The bytes of a base64 text; line ends are skipped, any other character ends it.
local function decoded(text)
  local bytes, bits, held = {}, 0, 0
  for i = 1, #text do
    local byte = text:byte(i)
    local digit = BASE64[byte]
    if digit then
      held, bits = (held * 64 + digit) % 0x100000, bits + 6
      if bits >= 8 then
        bits = bits - 8
        bytes[#bytes + 1] = string.char(math.floor(held / 2 ^ bits) % 256)
      end
    elseif byte ~= 13 and byte ~= 10 then
      break
    end
  end
  return table.concat(bytes)
end

local function base64(range, tree, seen, unit)
  local branch = tree:add(f.base64, range)
  local text = range:raw()
  if unit == 2 then text = text:gsub("(.).", "%1") end
  local bytes = decoded(text)
  if #bytes == 0 then return end
  local tvb = ByteArray.new(bytes, true):tvb("Value list")
  seen.damage = contained(function() list(cursor_of(tvb), branch, seen, 0) end) or seen.damage
end

local function request(cursor, tree, seen)
  tree:add_le(f.code, take(cursor, tree, 4, "the request code"))
  if left(cursor) > 0 then base64(take(cursor, tree, left(cursor), "base64"), tree, seen, 2) end
end

local function reply(cursor, tree, seen)
  if left(cursor) == 0 then return end
  local first = cursor.tvb(cursor.at, 1):uint()
  local unit = first == 12 and 2 or 1
  if (first == 11 or first == 12) and left(cursor) >= 5 then
    local stated, there = cursor.tvb(cursor.at + 1, 4):le_uint(), left(cursor) - 5
    if stated > there then
      -- A text that is cut still names the cameras before the cut.
      cursor.at = cursor.at + 5
      local whole = math.floor(there / unit) * unit
      if whole > 0 then base64(take(cursor, tree, whole, "base64"), tree, seen, unit) end
      fail(cursor, tree, string.format("a text, %d bytes", stated), there)
    end
  end
  local range, tag = record(cursor, tree)
  if tag ~= 11 and tag ~= 12 then fail(cursor, tree, "a text, type 12 or 11", "type " .. tag) end
  local size = math.floor(range:len() / unit) * unit - unit
  if size > 0 then base64(range(0, size), tree, seen, unit) end
end

-- Whether a parser of the message type reads a chunk. What it does not read it skips by the length.
local function is_read(tag, message)
  if message < 1 or message > 8 then return false end
  if tag == 5 then return true end
  if message <= 2 then return tag == message + 5 end
  if tag == 12 then return true end
  if message == 7 then return tag >= 8 and tag <= 10 end
  return message <= 6 and tag == message - 2
end

local function values(cursor, branch, length, seen)
  if length > left(cursor) then fail(cursor, branch, string.format("the values, %d bytes", length), left(cursor)) end
  local payload = cursor_of(cursor.tvb, cursor.at, cursor.at + length)
  local count, size = length_of(take(payload, branch, 8, "a count")), length_of(take(payload, branch, 8, "a size"))
  if size ~= 8 then
    branch:add(f.damage, string.format("offset %d: expected elements of 8 bytes, found elements of %d", payload.at, size))
  else
    if count > left(payload) / 8 then fail(payload, branch, count .. " values", left(payload) / 8) end
    for _ = 1, count do branch:add_le(f.element, take(payload, branch, 8, "a value")) end
    seen.values = (seen.values or 0) + count
  end
  cursor.at = cursor.at + length
end

local function text_chunk(cursor, branch, seen, message, tag)
  local range, text_tag = record(cursor, branch)
  local text = value_of(range, text_tag)
  add_text(branch, f.text, range, text)
  if tag == 5 then
    seen.mac = text
    if message >= 3 then add_text(branch, f.mac, range, text) end
  elseif tag == 8 then
    add_text(branch, f.ip, range, text)
  end
end

local function block(cursor, tree, seen, message)
  while left(cursor) > 0 do
    local start = cursor.at
    local tag_range = take(cursor, tree, 4, "a tag")
    local branch = tree:add_le(f.chunk, tag_range)
    local tag = tag_range:le_uint()
    if tag == 0 then return end
    local length_range = take(cursor, branch, 8, "a length")
    branch:add_le(f.chunk_length, length_range)
    local length = length_of(length_range)
    if not is_read(tag, message) or tag == 6 then
      local range = take(cursor, branch, length, "the payload")
      if range:len() > 0 then branch:add(tag == 6 and f.picture or f.raw, range) end
      seen.picture = seen.picture or tag == 6
    elseif tag == 7 then
      values(cursor, branch, length, seen)
    elseif tag == 12 then
      branch:add(f.ctt, take(cursor, branch, 1, "the CTT"))
      if message == 7 then take(cursor, branch, length, "the payload") end
    elseif tag <= 4 then
      seen.mac = nil
      list(cursor, branch, seen, 0)
    else
      text_chunk(cursor, branch, seen, message, tag)
    end
    branch:set_len(cursor.at - start)
  end
end

-- Why the finder delivers nothing of a block, in the words of tarnfind; nil where it delivers.
local function dropped_because(seen, message, damage, number)
  if seen.kind ~= 2 then return "block kind is not for the finder" end
  if detached_at[number] then return "no callback" end
  if message < 1 or message > 8 then return "unknown message type" end
  if damage or seen.damage then return "damaged" end
  local named = seen.mac and seen.mac ~= ""
  if message == 1 then return not named and "picture without text" or not seen.picture and "text without picture" or nil end
  if message == 2 then
    return not named and "values without text" or (seen.values or 0) == 0 and "text without values" or nil
  end
  if message == 7 and seen.mac == nil then return nil end
  return not named and "empty hardware address" or nil
end

local function error_record(cursor, tree)
  tree:add_le(f.error_class, take(cursor, tree, 4, "the class"))
  tree:add_le(f.error_code, take(cursor, tree, 4, "the code"))
  for i = 1, 3 do
    local size = take(cursor, tree, 4, "a length"):le_uint()
    if size > 0 then
      local range = take(cursor, tree, size, "a text")
      tree:add(f.error_text, range, i == 2 and range:le_ustring() or range:string())
    end
  end
end

local function arguments(cursor, tree, seen)
  while left(cursor) >= 8 do
    local range = take(cursor, tree, 8, "an argument")
    tree:add_le(seen.is_block and f.kind or f.argument, range)
    if seen.is_block then seen.kind = length_of(range) end
  end
end

local READERS = { arguments, request, reply, block, error_record }

local function body(tvb, from, tree, seen, message, number)
  local cursor = cursor_of(tvb, from)
  while left(cursor) >= 12 do
    local start = cursor.at
    local kind_range = take(cursor, tree, 4, "a part")
    local branch = tree:add_le(f.part, kind_range)
    local kind = kind_range:le_uint()
    local size = math.min(length_of(take(cursor, branch, 8, "a length")), left(cursor))
    local payload = cursor_of(tvb, cursor.at, cursor.at + size)
    cursor.at = cursor.at + size
    branch:set_len(cursor.at - start)
    local damage = contained(function()
      if READERS[kind] then READERS[kind](payload, branch, seen, message) end
    end)
    if kind == 4 then
      seen.dropped = dropped_because(seen, message, damage, number)
      if seen.dropped then tree:add(f.dropped, seen.dropped) end
    end
  end
end

-- What later packets need to know of this one.
local function note(pinfo, event, fn, stream)
  if event == 3 then detached[stream] = true end
  if event == 0 and fn == 3 then detached[stream] = nil end
  if event == 1 and detached[stream] then detached_at[pinfo.number] = true end
end

-- Puts the pieces of a frame together, behind its header. The last piece gives the whole; the others give nil.
local function assembled(tvb, header, pinfo, thread, size, offset)
  if not pinfo.visited then
    if offset == 0 then pending[thread] = tvb(0, header):bytes() end
    local bytes = pending[thread]
    if bytes and bytes:len() == header + offset then
      bytes:append(tvb(header):bytes())
      if bytes:len() == header + size then whole[pinfo.number], pending[thread] = bytes, nil end
    end
  end
  return whole[pinfo.number] and whole[pinfo.number]:tvb("Whole frame")
end

function tarn.dissector(tvb, pinfo, root)
  local header = tvb:len() >= HEADER_SIZE and tvb(1, 1):uint() or 0
  if header < HEADER_SIZE or header > tvb:len() or tvb(0, 1):uint() ~= 1 then return 0 end
  pinfo.cols.protocol = "TARN"
  local tree = root:add(tarn, tvb())
  local event, fn, result = tvb(2, 1):uint(), tvb(3, 1):uint(), tvb(5, 1):uint()
  local name = event == 0 and FUNCTIONS[fn] or EVENTS[event] or "unknown"
  local message = tvb(12, 4):le_uint()
  tree:add(f.version, tvb(0, 1))
  tree:add(f.event, tvb(2, 1))
  tree:add(f.fn, tvb(3, 1), name)
  tree:add(f.direction, tvb(4, 1))
  tree:add(f.result, tvb(5, 1))
  tree:add_le(f.flags, tvb(6, 2))
  tree:add_le(f.thread, tvb(8, 4))
  if event == 1 then tree:add_le(f.message, tvb(12, 4)) end
  tree:add_le(f.duration, tvb(16, 8))
  tree:add_le(f.stream, tvb(24, 8))
  tree:add_le(f.body_size, tvb(32, 8))
  tree:add_le(f.body_offset, tvb(40, 8))

  local size, offset = length_of(tvb(32, 8)), length_of(tvb(40, 8))
  if not pinfo.visited then note(pinfo, event, fn, tostring(tvb(24, 8):le_uint64())) end
  local seen = { is_block = event == 1 }
  if tvb:len() > header then
    local bytes = tvb
    if offset > 0 or tvb:len() - header < size then
      bytes = assembled(tvb, header, pinfo, tvb(8, 4):le_uint(), size, offset)
    end
    if bytes then body(bytes, header, tree, seen, message, pinfo.number) end
  end

  local info = event == 1 and "block: " .. (MESSAGES[message] or ("type " .. message)) or name
  if result == 0 then info = info .. " failed" end
  if seen.command then info = info .. ", " .. seen.command end
  if seen.mac and seen.mac ~= "" then info = info .. ", " .. seen.mac end
  if seen.dropped then info = info .. ", dropped: " .. seen.dropped end
  pinfo.cols.info = info
  local to_finder = tvb(4, 1):uint() == 1
  pinfo.cols.src = to_finder and "server" or "finder"
  pinfo.cols.dst = to_finder and "finder" or "server"
  return tvb:len()
end

DissectorTable.get("wtap_encap"):add(wtap.USER0, tarn)
