import { createServer } from "node:net";

// A port that nobody listens on. It is none of those that the system gives to whoever asks for any, the
// browser among them: it is still free when its server has been away.
export async function freePort() {
  for (;;) {
    const port = 10240 + Math.floor(Math.random() * 22528);
    const server = createServer();
    const isFree = await new Promise((done) => server.once("error", () => done(false)).listen(port, () => done(true)));
    if (!isFree) continue;
    await new Promise((done) => server.close(done));
    return port;
  }
}
