// What an edge node's messages must be to each other: births before data, sequence numbers without
// a hole, aliases and names of the birth, times in order. Independent of what the gateway thinks.
'use strict';

const { typeNumber } = require('./payload.js');

const DATA = ['NDATA', 'DDATA'];

class Session {
  constructor() {
    this.nodes = new Map();
  }

  /// "spBv1.0/GROUP/KIND/NODE[/DEVICE]"
  static parse(topic) {
    const [namespace, group, kind, node, device, ...rest] = topic.split('/');
    if (namespace !== 'spBv1.0' || node === undefined || rest.length > 0) return null;
    return { group, kind, node, device };
  }

  node(place) {
    const key = `${place.group}/${place.node}`;
    if (!this.nodes.has(key)) {
      this.nodes.set(key, { isBorn: false, seq: -1, bdSeq: null, metrics: new Map(),
        devices: new Map() });
    }
    return this.nodes.get(key);
  }

  metricsOf(place) {
    const node = this.node(place);
    return place.device === undefined ? node.metrics : node.devices.get(place.device) || new Map();
  }

  /// The number of the type that the birth told for an alias or a name.
  typeOf(place, metric) {
    const known = this.find(place, metric);
    return known ? typeNumber(known.type) : 0;
  }

  find(place, metric) {
    const metrics = this.metricsOf(place);
    const hasAlias = Object.prototype.hasOwnProperty.call(metric, 'alias') && metric.alias != null;
    return metrics.get(hasAlias ? `#${metric.alias}` : metric.name);
  }

  /// Takes a decoded message. Names metrics that came by alias; returns what is wrong with it.
  take(place, payload) {
    const problems = [];
    const node = this.node(place);
    if (place.kind === 'NDEATH') {
      const bdSeq = (payload.metrics.find((metric) => metric.name === 'bdSeq') || {}).value;
      if (payload.seq !== undefined) problems.push('a death of the node with a seq');
      if (payload.metrics.length !== 1) problems.push('a death of the node with other metrics');
      if (bdSeq === node.bdSeq) node.isBorn = false;
      return problems;
    }
    this.checkNumber(place, node, payload, problems);
    if (place.kind === 'NBIRTH') this.nodeBirth(node, payload, problems);
    else if (!node.isBorn) problems.push(`${place.kind} before a birth of the node`);
    if (place.kind === 'DBIRTH') this.deviceBirth(node, place.device, payload, problems);
    if (place.kind === 'DDATA' || place.kind === 'DDEATH') {
      if (!node.devices.has(place.device)) problems.push(`${place.kind} before a birth of the device`);
    }
    if (DATA.includes(place.kind)) this.checkData(place, payload, problems);
    if (place.kind === 'DDEATH') node.devices.delete(place.device);
    this.checkTimes(payload, problems);
    return problems;
  }

  checkNumber(place, node, payload, problems) {
    if (payload.seq === undefined) problems.push('no seq');
    const expected = place.kind === 'NBIRTH' ? 0 : (node.seq + 1) % 256;
    if (payload.seq !== expected) problems.push(`seq ${payload.seq} where ${expected} is expected`);
    node.seq = payload.seq;
  }

  nodeBirth(node, payload, problems) {
    node.isBorn = true;
    node.devices.clear();
    node.metrics = this.birth(payload, problems);
    const bdSeq = payload.metrics.find((metric) => metric.name === 'bdSeq');
    if (!bdSeq || bdSeq.type !== 'Int64') problems.push('no bdSeq of type Int64');
    node.bdSeq = bdSeq ? bdSeq.value : null;
    const rebirth = payload.metrics.find((metric) => metric.name === 'Node Control/Rebirth');
    if (!rebirth || rebirth.type !== 'Boolean' || rebirth.value !== false ||
        rebirth.alias !== undefined) {
      problems.push('no Node Control/Rebirth that is false and has no alias');
    }
  }

  /// Aliases are unique over the node. A device that is born again has those that it had.
  deviceBirth(node, device, payload, problems) {
    node.devices.delete(device);
    const metrics = this.birth(payload, problems);
    for (const others of [node.metrics, ...node.devices.values()]) {
      for (const [key, metric] of metrics) {
        if (key.startsWith('#') && others.has(key))
          problems.push(`alias ${metric.alias} is ${others.get(key).name} and ${metric.name}`);
      }
    }
    node.devices.set(device, metrics);
  }

  birth(payload, problems) {
    const metrics = new Map();
    for (const metric of payload.metrics) {
      if (metric.name === undefined || !metric.hasType) problems.push('a birth without name or type');
      if (metrics.has(metric.name)) problems.push(`${metric.name} stands twice`);
      metrics.set(metric.name, metric);
      if (metric.alias === undefined) continue;
      if (metrics.has(`#${metric.alias}`)) problems.push(`alias ${metric.alias} stands twice`);
      metrics.set(`#${metric.alias}`, metric);
    }
    return metrics;
  }

  checkData(place, payload, problems) {
    for (const metric of payload.metrics) {
      const known = this.find(place, metric);
      if (!known) problems.push(`no birth told of ${metric.name || `alias ${metric.alias}`}`);
      if (metric.hasType) problems.push(`${metric.name || metric.alias} has a type again`);
      if (known && metric.name === undefined) metric.name = known.name;
    }
  }

  checkTimes(payload, problems) {
    let last = 0;
    if (payload.timestamp === undefined) problems.push('no timestamp of the message');
    for (const metric of payload.metrics) {
      if (metric.timestamp === undefined) problems.push(`${metric.name} has no timestamp`);
      if (metric.isHistorical) continue;
      if (metric.timestamp < last) problems.push(`${metric.name} is older than the one before it`);
      last = metric.timestamp;
    }
  }
}

module.exports = { Session };
