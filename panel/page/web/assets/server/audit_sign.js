// Whether there is an audit to look at for who is there: the server is asked once by each run of it and
// each role.

import { ask } from "./api.js";

const PATIENCE = 60000; // ms: the server looks through the whole file

export class AuditSign {
  #asked = null; // of which run and role

  constructor(changed) {
    this.changed = changed;
    this.isThere = false;
  }

  async look({ instance, role, user }) {
    const asked = `${instance} ${role} ${user}`;
    if (asked === this.#asked) return;
    this.#asked = asked;
    this.isThere = false;
    if (role !== "engineer") return;
    const { status } = await ask("GET", "/audit?from=-1&limit=1", undefined, { patience: PATIENCE });
    if (asked !== this.#asked) return;
    // 503: there is one that cannot be read.
    this.isThere = status === 200 || status === 503;
    if (!this.isThere && status !== 404) this.#asked = null;
    this.changed();
  }
}
