// SPDX-License-Identifier: MIT
// Asks the format's validator about a character before and after an edit.
//
//     NODE_PATH=build-judges/node_modules node tools/judge_validator.cjs [--clean] OPENED.glb SAVED.glb
//
// SAVED may have no error and no warning that OPENED did not have. With --clean, OPENED is a file of ours and must be
// without any.
'use strict';

const fs = require('fs');
const { dirname, join } = require('path');
const validator = require('gltf-validator');

async function complaints(path) {
  const report = await validator.validateBytes(new Uint8Array(fs.readFileSync(path)), {
    maxIssues: 0,
    externalResourceFunction: (uri) =>
      Promise.resolve(new Uint8Array(fs.readFileSync(join(dirname(path), decodeURIComponent(uri))))),
  });
  // Severity 0 is an error, 1 a warning.
  return report.issues.messages.filter((message) => message.severity <= 1)
    .map((message) => `${message.code} ${message.pointer || ''} ${message.message}`);
}

async function main() {
  const clean = process.argv.includes('--clean');
  const [opened, saved] = process.argv.slice(2).filter((argument) => argument !== '--clean');
  const before = await complaints(opened);
  const after = (await complaints(saved)).filter((line) => !before.includes(line));
  if (clean) before.forEach((line) => console.log(`${opened}: ${line}`));
  after.forEach((line) => console.log(`${saved}: ${line}`));
  process.exitCode = after.length > 0 || (clean && before.length > 0) ? 1 : 0;
}

main().catch((error) => {
  console.error(String(error));
  process.exitCode = 1;
});
