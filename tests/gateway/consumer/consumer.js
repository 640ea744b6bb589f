// A consumer of what plc-gateway publishes, made of packages that know nothing of it: mqtt and
// sparkplug-payload. For tests, and for whoever wants to look at a session.
//
//     node consumer.js --port N --group G [options]     subscribes at a broker
//     node consumer.js --decode                         reads messages from standard input
//     node consumer.js --encode --group G               writes commands to standard output
//
// Options with a broker:
//
//     --host H           127.0.0.1 without it
//     --mqtt 5           MQTT 5 instead of 3.1.1
//     --state ID         is the host application ID: says online now, offline when it ends
//     --offline          with --state: does not say online by itself
//     --plain BASE       subscribes to BASE/# as well, whose messages are told as texts
//     --ca FILE          TLS, and the certificate of the authority
//     --cert FILE --key FILE          the consumer's own certificate
//     --user U --password P
//
// Each line of standard output is a JSON object. {"event":"ready"} comes when the subscriptions are
// confirmed, before all messages, {"event":"closed"} when the connection is lost. A message of
// Sparkplug is
//
//     {"topic":…,"qos":…,"retain":…,"kind":"DDATA","group":…,"node":…,"device":…,
//      "timestamp":…,"seq":…,"received":…,"metrics":[{"name":…,"alias":…,"timestamp":…,
//      "type":"Int16","value":…,"isNull":…,"isHistorical":…,"isTransient":…,
//      "properties":{"Quality":{"type":"Int32","value":500}}}],"problems":[…]}
//
// where `name` and `type` of data are those of the birth, integers of 64 bits and what is no number
// are texts, `received` is the time of receipt, and `problems` tells what breaks the rules of the
// convention: a hole in seq, data before birth, an alias that was not told, times out of order. Other
// messages (STATE, --plain) have "text" in place of what is decoded.
//
// Each line of standard input is a JSON object, with a broker or with --encode:
//
//     {"rebirth":true,"node":N}
//     {"dcmd":[{"name":…,"type":"Int16","value":5}],"node":N,"device":D,"uuid":"id"}
//     {"ncmd":[…],"node":N}
//     {"state":true,"timestamp":T}             with --state; the time is now without it
//     {"publish":TOPIC,"text":… or "hex":…,"qos":0,"retain":false}
//     {"quit":true}
//
// and with --decode {"topic":…,"hex":…}. The end of standard input ends the program.
'use strict';

const fs = require('fs');
const readline = require('readline');
const { decode, encode } = require('./payload.js');
const { Session } = require('./session.js');

const FLAGS = ['decode', 'encode', 'offline'];

function parseArguments(words) {
  const options = { host: '127.0.0.1' };
  for (let i = 0; i < words.length; ++i) {
    const name = words[i].replace(/^--/, '');
    if (name === words[i]) throw new Error(`${words[i]} is no option`);
    options[name] = FLAGS.includes(name) ? true : words[++i];
  }
  return options;
}

const print = (object) => process.stdout.write(`${JSON.stringify(object)}\n`);

const session = new Session();

/// The line that tells a message.
function told(topic, bytes, packet) {
  const line = { topic, qos: packet.qos, retain: packet.retain, received: Date.now() };
  const place = Session.parse(topic);
  if (!place) return { ...line, text: bytes.toString('utf8') };
  if (place.kind === 'NCMD' || place.kind === 'DCMD')
    return { ...line, ...place, hex: bytes.toString('hex') };
  try {
    const payload = decode(bytes, (metric) => session.typeOf(place, metric));
    return { ...line, ...place, ...payload, problems: session.take(place, payload) };
  } catch (error) {
    return { ...line, ...place, problems: [`it cannot be decoded: ${error.message}`] };
  }
}

/// Topic and bytes that a line of standard input asks for; null if it asks for something else.
function commanded(request, group) {
  const of = (kind) => `spBv1.0/${group}/${kind}/${request.node}`;
  if (request.rebirth !== undefined) {
    const metric = { name: 'Node Control/Rebirth', type: 'Boolean', value: request.rebirth };
    return { topic: of('NCMD'), bytes: encode([metric]) };
  }
  if (request.ncmd) return { topic: of('NCMD'), bytes: encode(request.ncmd) };
  if (request.dcmd)
    return { topic: `${of('DCMD')}/${request.device}`, bytes: encode(request.dcmd, request.uuid) };
  if (request.publish) {
    const bytes = request.hex === undefined ? Buffer.from(request.text || '')
      : Buffer.from(request.hex, 'hex');
    return { topic: request.publish, bytes, qos: request.qos, retain: request.retain };
  }
  return null;
}

function eachLine(take, end) {
  const lines = readline.createInterface({ input: process.stdin });
  lines.on('line', (line) => { if (line.trim() !== '') take(JSON.parse(line)); });
  lines.on('close', end);
}

function stateMessage(isOnline, time) {
  return JSON.stringify({ online: isOnline, timestamp: time });
}

function brokerOptions(options, connectedAt) {
  const file = (name) => (options[name] ? fs.readFileSync(options[name]) : undefined);
  return {
    host: options.host,
    port: Number(options.port),
    protocol: options.ca ? 'mqtts' : 'mqtt',
    protocolVersion: options.mqtt === '5' ? 5 : 4,
    clean: true,
    reconnectPeriod: 0,
    username: options.user,
    password: options.password,
    ca: file('ca'),
    cert: file('cert'),
    key: file('key'),
    will: options.state && {
      topic: `spBv1.0/STATE/${options.state}`, payload: stateMessage(false, connectedAt), qos: 1,
      retain: true,
    },
  };
}

function consume(options) {
  const connectedAt = Date.now();
  // What a broker has kept may come before it confirms the subscriptions.
  let early = [];
  const client = require('mqtt').connect(brokerOptions(options, connectedAt));
  const tell = (isOnline, time, done) => client.publish(`spBv1.0/STATE/${options.state}`,
    stateMessage(isOnline, time), { qos: 1, retain: true }, done);
  client.on('connect', () => {
    const topics = [`spBv1.0/${options.group}/#`, 'spBv1.0/STATE/#'];
    if (options.plain) topics.push(`${options.plain}/#`);
    client.subscribe(topics, { qos: 1 }, (error) => {
      if (error) throw error;
      if (options.state && !options.offline) tell(true, connectedAt);
      print({ event: 'ready' });
      early.forEach(print);
      early = null;
    });
  });
  client.on('message', (topic, bytes, packet) => {
    const line = told(topic, bytes, packet);
    if (early) early.push(line);
    else print(line);
  });
  client.on('error', (error) => { print({ event: 'error', text: String(error.message || error) }); });
  client.on('close', () => { print({ event: 'closed' }); process.exit(); });
  const quit = () => {
    const end = () => client.end(false);
    if (options.state && client.connected) tell(false, Date.now(), end);
    else end();
  };
  eachLine((request) => {
    const message = commanded(request, options.group);
    if (message) client.publish(message.topic, message.bytes,
      { qos: message.qos || 0, retain: message.retain || false });
    else if (request.state !== undefined) tell(request.state, request.timestamp ?? Date.now());
    else if (request.quit) quit();
  }, quit);
}

function main() {
  const options = parseArguments(process.argv.slice(2));
  const end = () => {};
  if (options.decode) {
    eachLine((line) => print(told(line.topic, Buffer.from(line.hex, 'hex'), {})), end);
  } else if (options.encode) {
    eachLine((line) => {
      const message = commanded(line, options.group);
      print({ topic: message.topic, hex: message.bytes.toString('hex') });
    }, end);
  } else {
    consume(options);
  }
}

main();
