// Payloads of Sparkplug B, read and written by the package sparkplug-payload.
//
// Three things that package leaves to its users: a metric of a DATA message, which has no data type
// of its own (that of its birth counts), 32-bit unsigned numbers in the 32-bit field, and arrays.
'use strict';

const Long = require('long');
const { Payload } = require('sparkplug-payload/lib/sparkplugPayloadProto').org.eclipse.tahu.protobuf;
const sparkplug = require('sparkplug-payload').get('spBv1.0');

const UINT32 = 7;
const FIRST_ARRAY = 22;
const BOOLEAN_ARRAY = 32;
const STRING_ARRAY = 33;

const NAMES = ['Unknown', 'Int8', 'Int16', 'Int32', 'Int64', 'UInt8', 'UInt16', 'UInt32', 'UInt64',
  'Float', 'Double', 'Boolean', 'String', 'DateTime', 'Text', 'UUID', 'DataSet', 'Bytes', 'File',
  'Template', 'PropertySet', 'PropertySetList', 'Int8Array', 'Int16Array', 'Int32Array',
  'Int64Array', 'UInt8Array', 'UInt16Array', 'UInt32Array', 'UInt64Array', 'FloatArray',
  'DoubleArray', 'BooleanArray', 'StringArray', 'DateTimeArray'];

/// By the type of the array: the size of an element, and how it is read.
const ELEMENTS = {
  22: [1, 'readInt8'], 23: [2, 'readInt16LE'], 24: [4, 'readInt32LE'], 25: [8, 'readBigInt64LE'],
  26: [1, 'readUInt8'], 27: [2, 'readUInt16LE'], 28: [4, 'readUInt32LE'],
  29: [8, 'readBigUInt64LE'], 30: [4, 'readFloatLE'], 31: [8, 'readDoubleLE'],
  34: [8, 'readBigUInt64LE'],
};

function readTexts(bytes) {
  const texts = [];
  for (let start = 0; start < bytes.length;) {
    const end = bytes.indexOf(0, start);
    if (end < 0) throw new Error('a text without a zero behind it');
    texts.push(bytes.toString('utf8', start, end));
    start = end + 1;
  }
  return texts;
}

function readBits(bytes) {
  const count = bytes.readUInt32LE(0);
  if (bytes.length !== 4 + Math.ceil(count / 8)) throw new Error('bits that are not as many as told');
  return Array.from({ length: count },
    (_, i) => (bytes[4 + (i >> 3)] & (0x80 >> (i & 7))) !== 0);
}

function readArray(type, raw) {
  const bytes = Buffer.from(raw);
  if (type === BOOLEAN_ARRAY) return readBits(bytes);
  if (type === STRING_ARRAY) return readTexts(bytes);
  const [size, read] = ELEMENTS[type];
  if (bytes.length % size !== 0) throw new Error('an array of another size than its elements');
  return Array.from({ length: bytes.length / size }, (_, i) => bytes[read](i * size));
}

/// What JSON cannot hold exactly as a text: integers of 64 bits, and what is no number.
function plain(value) {
  if (Array.isArray(value)) return value.map(plain);
  if (typeof value === 'bigint' || (value && value.constructor.name === 'Long'))
    return value.toString();
  if (typeof value === 'number' && !Number.isFinite(value)) return String(value);
  return value === undefined ? null : value;
}

/// A 64-bit number as all JSON readers take it; times and sequence numbers are small enough.
const small = (long) => (long === undefined || long === null ? undefined : Number(long));

const has = (message, field) => Object.prototype.hasOwnProperty.call(message, field);

function properties(metric) {
  if (!metric.properties) return undefined;
  const result = {};
  for (const [key, property] of Object.entries(metric.properties))
    result[key] = { type: property.type, value: plain(property.value) };
  return result;
}

/// The value by the type that the metric's birth told; 64-bit integers as texts of digits.
function valueOf(raw, decoded, type) {
  if (raw.isNull) return null;
  if (type === UINT32) return has(raw, 'intValue') ? raw.intValue >>> 0 : small(raw.longValue);
  if (type >= FIRST_ARRAY) return plain(readArray(type, raw.bytesValue));
  if (type === 4 || type === 8) {
    // The package reads both as signed or unsigned by their type, if they have their full 64 bits.
    return BigInt[type === 4 ? 'asIntN' : 'asUintN'](64, BigInt(decoded.value.toString())).toString();
  }
  return plain(decoded.value);
}

/// `typeOf` gives the type told at birth for a metric without one.
function decode(bytes, typeOf) {
  const raw = Payload.decode(bytes);
  const types = raw.metrics.map((metric) =>
    (has(metric, 'datatype') ? metric.datatype : typeOf(metric)) || 0);
  const told = raw.metrics.map((metric) => has(metric, 'datatype'));
  raw.metrics.forEach((metric, i) => { metric.datatype = types[i]; });
  const decoded = sparkplug.decodePayload(Payload.encode(raw).finish());
  const metrics = (decoded.metrics || []).map((metric, i) => ({
    name: metric.name,
    alias: small(metric.alias),
    timestamp: small(metric.timestamp),
    type: NAMES[types[i]],
    hasType: told[i],
    isNull: raw.metrics[i].isNull || undefined,
    value: valueOf(raw.metrics[i], metric, types[i]),
    isHistorical: metric.isHistorical || undefined,
    isTransient: metric.isTransient || undefined,
    properties: properties(metric),
  }));
  return {
    timestamp: small(decoded.timestamp),
    seq: has(raw, 'seq') ? small(raw.seq) : undefined,
    metrics,
  };
}

/// `metrics` have `name` or `alias`, `type` and `value`; integers of 64 bits may be texts.
function encode(metrics, uuid) {
  const now = Date.now();
  return Buffer.from(sparkplug.encodePayload({
    timestamp: now,
    uuid,
    metrics: metrics.map((metric) => {
      const isLong = metric.type === 'Int64' || metric.type === 'UInt64';
      const value = isLong ? Long.fromString(String(metric.value), metric.type === 'UInt64')
        : metric.value;
      return { timestamp: now, ...metric, value };
    }),
  }));
}

const typeNumber = (name) => NAMES.indexOf(name);

module.exports = { decode, encode, typeNumber };
