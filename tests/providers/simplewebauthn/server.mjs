import { readFileSync } from 'node:fs';
import { createServer } from 'node:http';
import { text } from 'node:stream/consumers';
import * as webauthn from '@simplewebauthn/server';

const rpID = 'keys.example.test';
const file = (name) => readFileSync(new URL(name, import.meta.url));
const expected = () => ({ expectedChallenge: challenge, expectedOrigin: `https://${rpID}`, expectedRPID: rpID });
let challenge, credential;
let said = []; // of the verifier, since the page was opened

const verifiers = {
  async register(response) {
    const { verified, registrationInfo } = await webauthn.verifyRegistrationResponse({ response, ...expected() });
    credential = registrationInfo?.credential;
    return verified;
  },
  async 'sign-in'(response) {
    return (await webauthn.verifyAuthenticationResponse({ response, credential, ...expected() })).verified;
  },
};

// Requires a user whom the key has verified, as the verifiers do.
const options = {
  register: () => webauthn.generateRegistrationOptions({
    rpName: 'Example', rpID, userName: 'ada', authenticatorSelection: { userVerification: 'required' },
  }),
  'sign-in': () => webauthn.generateAuthenticationOptions({
    rpID, allowCredentials: [{ id: credential.id }], userVerification: 'required',
  }),
};

async function verify(what, request) {
  try {
    return (await verifiers[what](JSON.parse(await text(request)))) ? 'accepted' : 'refused';
  } catch (error) {
    return `refused: ${error.message.split(' "')[0]}`;
  }
}

async function reply(request) {
  const what = request.url.slice(1);
  if (what === 'continue') {
    const query = new URLSearchParams({ verifier: said.join(', ') });
    return [303, { Location: `https://app.example.test/done?${query}` }];
  }
  if (what === 'browser.js') {
    const bundle = file('node_modules/@simplewebauthn/browser/dist/bundle/index.umd.min.js');
    return [200, { 'Content-Type': 'text/javascript' }, bundle];
  }
  if (what in options && request.method === 'POST') {
    said.push(`${what} ${await verify(what, request)}`);
    return [200, { 'Content-Type': 'text/plain' }, said.at(-1)];
  }
  if (what in options) {
    const found = await options[what]();
    challenge = found.challenge;
    return [200, { 'Content-Type': 'application/json' }, JSON.stringify(found)];
  }
  said = [];
  return [200, { 'Content-Type': 'text/html' }, file('page.html')];
}

createServer(async (request, response) => {
  const [status, headers, body] = await reply(request);
  response.writeHead(status, headers).end(body);
}).listen(8002, '127.0.0.1');
