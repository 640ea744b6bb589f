// Who is there? Shown where the server asks for users.

import { html, useState } from "../html.js";

export function LoginView({ panel }) {
  const [error, setError] = useState("");
  const [busy, setBusy] = useState(false);
  const submit = async (event) => {
    event.preventDefault();
    const fields = new FormData(event.target);
    setBusy(true);
    setError("");
    try {
      await panel.login(fields.get("user"), fields.get("password"));
    } catch (failure) {
      setError(failure.status ? failure.message : "The server does not answer.");
    }
    setBusy(false);
  };
  return html`<main class="login">
    <form class="card" onSubmit=${submit}>
      <h1>PLC panel</h1>
      <label>User <input name="user" autocomplete="username" required autofocus /></label>
      <label>Password <input name="password" type="password" autocomplete="current-password" required /></label>
      <p class="error" role="alert">${error}</p>
      <button type="submit" class="primary" disabled=${busy}>${busy ? "Logging in …" : "Log in"}</button>
    </form>
  </main>`;
}
