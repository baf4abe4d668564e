-- Shows the protocol between socket clients and log servers of liblogger in Wireshark and tshark:
--
--     tshark -X lua_script:liblogger.lua -i lo -f "tcp port 4711" -O liblogger
--
-- Connections to port 4711 are taken for its own; others with "Decode As", or with
-- -d tcp.port==PORT,liblogger on the command line.

local protocol = Proto("liblogger", "liblogger log events")

local kEventFrame = 1
local kFlushRequest = 2
local kIntegerSize = 4
local kFrameHeader = 1 + kIntegerSize
local kMarkSize = 2
local kSmallestRecord = 34
local kLongestSummary = 100

-- What is expected next from a side.
local kVersion = "version"
local kType = "type"
local kLength = "length"
local kAnswers = "answers"
local kNothing = "nothing"
local kUnknown = "unknown"

local fields = {
  version = ProtoField.int32("liblogger.version", "Protocol version"),
  type = ProtoField.uint8("liblogger.type", "Type", base.DEC,
    {[kEventFrame] = "Event", [kFlushRequest] = "Flush request"}),
  length = ProtoField.int32("liblogger.length", "Length of the record"),
  mark = ProtoField.string("liblogger.mark", "Mark"),
  level = ProtoField.uint32("liblogger.level", "Level"),
  messageLength = ProtoField.int32("liblogger.message.length", "Length of the message"),
  message = ProtoField.string("liblogger.message", "Message"),
  handlerLength = ProtoField.int32("liblogger.handler.length", "Length of the handler's name"),
  handler = ProtoField.string("liblogger.handler", "Handler"),
  fileLength = ProtoField.int32("liblogger.file.length", "Length of the file's name"),
  file = ProtoField.string("liblogger.file", "Source file"),
  line = ProtoField.int32("liblogger.line", "Source line"),
  seconds = ProtoField.int32("liblogger.seconds", "Seconds"),
  microseconds = ProtoField.int32("liblogger.microseconds", "Microseconds"),
  time = ProtoField.absolute_time("liblogger.time", "Time", base.UTC),
  thread = ProtoField.int32("liblogger.thread", "Thread id"),
  answer = ProtoField.uint8("liblogger.answer", "Flush answer"),
  skipped = ProtoField.bytes("liblogger.skipped", "Skipped"),
  unread = ProtoField.bytes("liblogger.unread", "Not read"),
}
protocol.fields = fields

local experts = {
  outside = ProtoExpert.new("liblogger.outside",
    "A field is outside of the record: the server drops the event",
    expert.group.MALFORMED, expert.severity.ERROR),
  rest = ProtoExpert.new("liblogger.rest", "The record goes on after its last field",
    expert.group.PROTOCOL, expert.severity.NOTE),
  zero = ProtoExpert.new("liblogger.length.zero",
    "No frame: the next four bytes are the length instead",
    expert.group.PROTOCOL, expert.severity.NOTE),
  refused = ProtoExpert.new("liblogger.length.refused",
    "The server ends the connection at such a length",
    expert.group.MALFORMED, expert.severity.ERROR),
  cut = ProtoExpert.new("liblogger.cut", "The rest of it is not put together with this",
    expert.group.UNDECODED, expert.severity.NOTE),
}
protocol.experts = experts

protocol.prefs.limit = Pref.uint("Longest record", 64 * 1024 * 1024,
  "Length in bytes above which the server ends the connection")

local stream = Field.new("tcp.stream")
local completeness = Field.new("tcp.completeness")

-- Segments are shown in any order and more than once, but come in their order the first time. The state
-- that a call begins with is therefore kept with its place in the capture.
local connections
local expectedAt
local firstShown  -- A segment may come in several parts, whose summaries follow each other.

function protocol.init()
  connections = {}
  expectedAt = {}
  firstShown = {}
end

local function integer(range, place)
  return range:range(place, kIntegerSize):int()
end

local function sender(pinfo)
  return tostring(pinfo.src) .. " " .. pinfo.src_port
end

local function receiver(pinfo)
  return tostring(pinfo.dst) .. " " .. pinfo.dst_port
end

local function summary(range)
  return range:range(0, math.min(range:len(), kLongestSummary)):string(ENC_UTF_8)
end

--- Reads the fields of a record one after the other, as the server does.
local Reader = {}
Reader.__index = Reader

function Reader.new(record, tree)
  return setmetatable({record = record, tree = tree, place = 0, isInside = true}, Reader)
end

function Reader:take(size)
  local start = self.place
  self.place = start + size
  self.isInside = self.isInside and start >= 0 and self.place <= self.record:len()
  if self.isInside then return self.record:range(start, size) end
end

function Reader:integer(field)
  local range = self:take(kIntegerSize)
  if not range then return 0 end
  self.tree:add(field, range)
  return range:int()
end

-- The offsets after a text are computed with its length as it is, negative or not.
function Reader:text(lengthField, field)
  local length = self:integer(lengthField)
  if length <= 0 then
    self.place = self.place + length
    return ""
  end
  local range = self:take(length)
  if not range then return "" end
  self.tree:add_packet_field(field, range, ENC_UTF_8)
  return summary(range)
end

function Reader:time()
  local start = self.place
  local seconds = self:integer(fields.seconds)
  local microseconds = self:integer(fields.microseconds)
  if not self.isInside or microseconds < 0 or microseconds > 999999 then return end
  local both = self.record:range(start, 2 * kIntegerSize)
  self.tree:add(fields.time, both, NSTime.new(seconds, microseconds * 1000)):set_generated()
end

local function showRecord(record, tree)
  local reader = Reader.new(record, tree)
  local mark = reader:take(kMarkSize)
  if mark then tree:add(fields.mark, mark) end
  local level = reader:take(kIntegerSize)
  if level then tree:add(fields.level, level) end
  local message = reader:text(fields.messageLength, fields.message)
  local handler = reader:text(fields.handlerLength, fields.handler)
  reader:text(fields.fileLength, fields.file)
  reader:integer(fields.line)
  reader:time()
  reader:integer(fields.thread)
  if not reader.isInside then
    tree:add_proto_expert_info(experts.outside)
    return "Rejected event"
  end
  if reader.place < record:len() then tree:add_proto_expert_info(experts.rest) end
  return string.format("Event, level %.0f, %s: %s", level:uint(), handler, message)
end

--- One call's data, the tree it is shown in, and what it comes to.
local Segment = {}
Segment.__index = Segment

function Segment.new(tvb, pinfo, root)
  local new = {tvb = tvb, pinfo = pinfo, root = root, place = 0, items = 0, first = ""}
  return setmetatable(new, Segment)
end

function Segment:tree()
  self.item = self.item or self.root:add(protocol, self.tvb())
  return self.item
end

function Segment:left()
  return self.tvb:len() - self.place
end

function Segment:take(size)
  local range = self.tvb:range(self.place, size)
  self.place = self.place + size
  return range
end

function Segment:count(text)
  self.items = self.items + 1
  if self.items == 1 then self.first = text end
end

--- Whether so many bytes are here. If not, they are asked for, or shown as what they are.
function Segment:has(size)
  local missing = size - self:left()
  if missing <= 0 then return true end
  if self.pinfo.can_desegment > 0 then
    self.pinfo.desegment_offset = self.place
    -- The request for a header is followed by one for the body, which Wireshark loses when the first was
    -- for a number of bytes.
    self.pinfo.desegment_len = size > kFrameHeader and missing or DESEGMENT_ONE_MORE_SEGMENT
  else
    self:take(self:left())
    self:tree():add_proto_expert_info(experts.cut)
    self:count("Part of an event")
    self.isCut = true
  end
  return false
end

function Segment:showAll(field, text)
  self:tree():add(field, self:take(self:left()))
  self:count(text)
end

function Segment:showSummary()
  if self.items == 0 then return end
  local columns = self.pinfo.cols
  columns.protocol:set("liblogger")
  columns.info:clear()
  firstShown[self.pinfo.number] = firstShown[self.pinfo.number] or self.tvb:offset()
  if firstShown[self.pinfo.number] ~= self.tvb:offset() then columns.info:append("; ") end
  columns.info:append(self.first)
  if self.items > 1 then
    columns.info:append(string.format(" (and %d more)", self.items - 1))
  end
  columns.info:fence()
end

local steps = {}

steps[kVersion] = function(segment, connection)
  if not segment:has(kIntegerSize) then return nil end
  local range = segment:take(kIntegerSize)
  segment:tree():add(fields.version, range)
  segment:count(string.format("Version %d", range:int()))
  return receiver(segment.pinfo) == connection.server and kType or kAnswers
end

steps[kAnswers] = function(segment)
  segment:tree():add(fields.answer, segment:take(1))
  segment:count("Flush answer")
  return kAnswers
end

local function lengthIsRefused(length)
  return length < 0 or length > protocol.prefs.limit
end

--- Shows a length, and the record after it when there is one. `start` is where the frame began.
local function showLength(segment, start, lengthPlace)
  local length = integer(segment.tvb, lengthPlace)
  local header = lengthPlace + kIntegerSize - start
  local hasRecord = length > 0 and not lengthIsRefused(length)
  if hasRecord and not segment:has(header + length) then return nil end
  local frame = segment:take(hasRecord and header + length or header)
  local tree = segment:tree():add(protocol, frame, "Event")
  if lengthPlace > start then tree:add(fields.type, frame:range(0, 1)) end
  local item = tree:add(fields.length, segment.tvb:range(lengthPlace, kIntegerSize))
  if hasRecord then
    local text = showRecord(frame:range(header, length), tree)
    tree:set_text(text)
    segment:count(text)
    return kType
  end
  segment:count(string.format("Length %d", length))
  item:add_proto_expert_info(length == 0 and experts.zero or experts.refused)
  return length == 0 and kLength or kNothing
end

steps[kLength] = function(segment)
  if not segment:has(kIntegerSize) then return nil end
  return showLength(segment, segment.place, segment.place)
end

local function showSkipped(segment)
  local size = 0
  while size < segment:left() do
    local byte = segment.tvb:range(segment.place + size, 1):uint()
    if byte == kEventFrame or byte == kFlushRequest then break end
    size = size + 1
  end
  segment:tree():add(fields.skipped, segment:take(size))
  segment:count("Skipped bytes")
  return kType
end

steps[kType] = function(segment)
  local byte = segment.tvb:range(segment.place, 1):uint()
  if byte == kFlushRequest then
    segment:tree():add(fields.type, segment:take(1))
    segment:count("Flush request")
    return kType
  end
  if byte ~= kEventFrame then return showSkipped(segment) end
  if not segment:has(kFrameHeader) then return nil end
  return showLength(segment, segment.place, segment.place + 1)
end

steps[kNothing] = function(segment)
  segment:showAll(fields.unread, "Not read")
  return kNothing
end

local function beginsWithFrame(tvb)
  if tvb:len() < kFrameHeader + kMarkSize or tvb:range(0, 1):uint() ~= kEventFrame then
    return false
  end
  local length = integer(tvb, 1)
  return length >= kSmallestRecord and not lengthIsRefused(length) and
    tvb:range(kFrameHeader, kMarkSize):string() == "01"
end

-- The capture began in the middle of the connection, or part of it is missing: the next segment that is
-- understood is one with a frame at its beginning.
steps[kUnknown] = function(segment, connection)
  if segment.place == 0 and beginsWithFrame(segment.tvb) then
    connection.expected[receiver(segment.pinfo)] = kAnswers
    return kType
  end
  segment:showAll(fields.unread, "Amid a connection")
  return kUnknown
end

local function wasSeenOpening()
  local seen = completeness()
  return seen and seen.value % 4 > 0  -- One or both of the segments that open it.
end

-- The client, which opened the connection, sends first.
local function newConnection(pinfo)
  local expected = wasSeenOpening() and kVersion or kUnknown
  return {
    server = receiver(pinfo),
    expected = {[sender(pinfo)] = expected, [receiver(pinfo)] = expected},
  }
end

local function connectionOf(pinfo)
  local number = stream().value
  connections[number] = connections[number] or newConnection(pinfo)
  return connections[number]
end

function protocol.dissector(tvb, pinfo, root)
  local connection = connectionOf(pinfo)
  local expectedFrom = connection.expected
  local side = sender(pinfo)
  local place = pinfo.number .. " " .. tvb:offset()
  if not pinfo.visited then expectedAt[place] = expectedFrom[side] end

  local segment = Segment.new(tvb, pinfo, root)
  local expected = expectedAt[place] or kUnknown
  while expected and segment:left() > 0 do
    expected = steps[expected](segment, connection)
    if expected and not pinfo.visited then expectedFrom[side] = expected end
  end
  if segment.isCut and not pinfo.visited then expectedFrom[side] = kUnknown end
  segment:showSummary()
end

DissectorTable.get("tcp.port"):add(4711, protocol)
DissectorTable.get("tcp.port"):add_for_decode_as(protocol)
