// validate.js FILE...: puts glTF files before the validator and prints its errors and warnings, one line a code. Fails on each that
// allowed-codes.json does not allow. An entry there allows a code with a reason, and only where all of its conditions hold:
//   message     a pattern that the message matches
//   difference  how much the message's first number is above its second
//   file        a pattern that the file's path matches
'use strict';

const fs = require('fs');
const path = require('path');
const validator = require('gltf-validator');

const kWarning = 1; // 0 is an error; what is above is for information
const kShown = 5; // lines of a code that is not allowed
const kAllowed = JSON.parse(fs.readFileSync(path.join(__dirname, 'allowed-codes.json'), 'utf8'));

function difference(message) {
  const numbers = message.match(/\d+/g) || [];
  return numbers[0] - numbers[1];
}

function isAllowed(file, issue) {
  return kAllowed.some((entry) => entry.code === issue.code &&
    (!entry.message || new RegExp(entry.message).test(issue.message)) &&
    (!entry.difference || difference(issue.message) === entry.difference) &&
    (!entry.file || new RegExp(entry.file).test(file)));
}

async function issuesOf(file) {
  const options = {
    uri: file,
    maxIssues: 0, // all of them
    externalResourceFunction: (uri) =>
      fs.promises.readFile(path.join(path.dirname(file), decodeURIComponent(uri))).then((bytes) => new Uint8Array(bytes)),
  };
  const report = await validator.validateBytes(new Uint8Array(fs.readFileSync(file)), options);
  return report.issues.messages.filter((issue) => issue.severity <= kWarning);
}

async function main(files) {
  const counts = new Map(); // by code and whether it is allowed
  let faults = 0;
  for (const file of files) {
    for (const issue of await issuesOf(file)) {
      const allowed = isAllowed(file, issue);
      const key = `${issue.code} (${issue.severity === kWarning ? 'warning' : 'error'}${allowed ? ', allowed' : ''})`;
      const count = counts.get(key) || { issues: 0, files: new Set() };
      counts.set(key, count);
      ++count.issues;
      count.files.add(file);
      if (allowed)
        continue;
      ++faults;
      if (count.issues <= kShown)
        console.log(`${file}: ${issue.code}: ${issue.message} (${issue.pointer || `byte ${issue.offset}`})`);
    }
  }
  for (const [key, count] of counts)
    console.log(`${key}: ${count.issues} in ${count.files.size} files`);
  console.log(`${files.length} files, ${faults} issues that are not allowed`);
  return files.length > 0 && faults === 0;
}

main(process.argv.slice(2)).then(
  (good) => { process.exitCode = good ? 0 : 1; },
  (error) => { console.error(`validate.js: ${error}`); process.exitCode = 1; }); // a file that is no glTF at all
