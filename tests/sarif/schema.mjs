// Reads what qxp reports as SARIF, as the schema of the standard and its readers would.
import assert from 'node:assert/strict';
import { existsSync, readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { join } from 'node:path';
import { fileURLToPath, pathToFileURL } from 'node:url';

const require = createRequire(join(process.env.QXP_NPM_MODULES, 'package.json'));
const Ajv = require('ajv-draft-04').default;
const addFormats = require('ajv-formats').default;

// One pattern of the schema is none in the stricter syntax: of languages, which qxp does not name.
const ajv = new Ajv({ strict: false, allErrors: true, unicodeRegExp: false });
addFormats(ajv);
const validate = ajv.compile(require('@microsoft/jest-sarif/lib/schemas/sarif-2.1.0-rtm.5.json'));

/** What the schema has against a document; empty when it is a report. */
export function faultsOf(document) {
    return validate(document) ? [] : validate.errors.map(({ instancePath, message }) => `${instancePath} ${message}`);
}

/** The run of a report, after the schema has agreed to it. */
export function runOf(text, what) {
    let document;
    assert.doesNotThrow(() => { document = JSON.parse(text); }, `${what}: ${text.slice(0, 200)}`);
    assert.deepEqual(faultsOf(document), [], what);
    assert.equal(document.runs.length, 1, what);
    return document.runs[0];
}

/** All locations of a run that name a file. */
export function locationsOf(run) {
    return run.results.flatMap((result) => [...result.locations ?? [], ...result.relatedLocations ?? []])
        .filter((location) => location.physicalLocation)
        .map(({ physicalLocation: { artifactLocation, region } }) => ({ uri: artifactLocation.uri, region }));
}

/** The file that an address means to somebody in `folder`. */
export function fileOf(uri, folder) {
    return fileURLToPath(new URL(uri, `${pathToFileURL(folder)}/`));
}

/** The text of the region's line, as it stands in the file. */
export function lineAt({ uri, region }, folder) {
    const file = fileOf(uri, folder);
    assert.ok(existsSync(file), `${uri} is no file`);
    const lines = readFileSync(file, 'utf8').split('\n');
    assert.ok(region.startLine <= lines.length, `${uri} has no line ${region.startLine}`);
    return lines[region.startLine - 1];
}
