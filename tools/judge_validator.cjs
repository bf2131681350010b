// SPDX-License-Identifier: MIT
// Asks the format's validator about a character before and after an edit.
//
//     NODE_PATH=build-judges/node_modules node tools/judge_validator.cjs OPENED.glb SAVED.glb
//
// OPENED is a sample of ours and must be without errors and warnings. SAVED may have none that OPENED did not have.
'use strict';

const fs = require('fs');
const validator = require('gltf-validator');

async function complaints(path) {
  const report = await validator.validateBytes(new Uint8Array(fs.readFileSync(path)), { maxIssues: 0 });
  // Severity 0 is an error, 1 a warning.
  return report.issues.messages.filter((message) => message.severity <= 1)
    .map((message) => `${message.code} ${message.pointer || ''} ${message.message}`);
}

async function main() {
  const [opened, saved] = process.argv.slice(2);
  const before = await complaints(opened);
  const after = (await complaints(saved)).filter((line) => !before.includes(line));
  before.forEach((line) => console.log(`${opened}: ${line}`));
  after.forEach((line) => console.log(`${saved}: ${line}`));
  process.exitCode = before.length + after.length > 0 ? 1 : 0;
}

main().catch((error) => {
  console.error(String(error));
  process.exitCode = 1;
});
