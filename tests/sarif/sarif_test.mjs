// Judges the reports of qxp --diagnostics=sarif: by the schema, by the files that they name, and by what
// --diagnostics=json says about the same run.
//
//     QXP=PROGRAM QXP_NPM_MODULES=FOLDER node --test sarif_test.mjs

import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { chmodSync, cpSync, mkdirSync, mkdtempSync, readFileSync, readdirSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { after, before, test } from 'node:test';
import { fileURLToPath } from 'node:url';

import { faultsOf, fileOf, lineAt, locationsOf, runOf } from './schema.mjs';

const Cases = fileURLToPath(new URL('../cli/cases', import.meta.url));

const Files = {
    'good.txt': 'a line\n',
    'bad.txt': 'first\n#warning look\n  #nosuch 1\n',
    'à b/50% of #1?.txt': '#for i 1;2;1\n#include "other.inc"\n#endfor\n',
    'à b/other.inc': 'fine\n#{ total }\n',
    'a:b.txt': '#endif\n',
    'open.txt': '#if 1\n',
    'ünclosed.tags': '<a>\n<b>\n</a>\n',
    'closed.tags': '</a>\n',
    'bad.tpl': '<%keep%>\n<%if cond="nosuch("%>\nx\n<%/if%>\n<%/keep%>\n',
    'odd %20.tpl': '<%keep%>\n<%nix%>\n<%/nix%>\n<%keep%>\n[%(nosuch)%]\n<%/keep%>\n<%/keep%>\n',
    'crossed.tpl': '<%if cond="1"%>\n<%/keep%>\n',
    'model.xml': '<model/>\n',
    'bröken model.xml': '<model>\n<a></b>\n</model>\n',
    'other.xml': '<other/>\n',
    'fäils %41.js': 'var a = 1;\nfunction f() {\n  throw new Error("it failed");\n}\nf();\n',
    'syntax.js': '#!/usr/bin/env qxp\nvar b = = 2;\n',
    'config.xml': '<Config>\n<a></Config>\n',
};

/// Command lines, and the places that their results name.
const Runs = [
    [['preprocess', 'good.txt'], []],
    [['preprocess', 'bad.txt'], ['bad.txt:2', 'bad.txt:3']],
    [['preprocess', '--partial', 'bad.txt'], ['bad.txt:2']],
    [['preprocess', '-C', 'à b', '50% of #1?.txt'],
        ['à b/other.inc:2', 'à b/50% of #1?.txt:2', 'à b/50% of #1?.txt:1', 'à b/other.inc:2']],
    [['preprocess', 'a:b.txt'], ['a:b.txt:1']],
    [['preprocess', 'open.txt'], []],
    [['preprocess', 'nosuch.txt'], []],
    [['preprocess', '-D', 'a=1', '-D', 'a=2', 'good.txt'], []],
    [['preprocess', '-o', 'no/such/folder/x', 'good.txt'], []],
    [['preprocess', '--nosuch'], []],
    [['preprocess', '--verbose', 'good.txt'], []],
    [['tags', 'ünclosed.tags'], ['ünclosed.tags:3']],
    [['tags', 'closed.tags'], ['closed.tags:1']],
    [['tags', '--preprocess', 'bad.txt'], ['bad.txt:2', 'bad.txt:3']],
    [['expand', 'bad.tpl', 'model.xml'], ['bad.tpl:2', 'bad.tpl:2']],
    [['expand', 'odd %20.tpl', 'model.xml'], ['odd %20.tpl:2', 'odd %20.tpl:4', 'odd %20.tpl:4']],
    [['expand', 'crossed.tpl', 'model.xml'], ['crossed.tpl:2']],
    [['expand', '-e', '1 +', 'bad.tpl', 'model.xml'], []],
    [['expand', 'bad.tpl', 'bröken model.xml'], ['bröken model.xml:2']],
    [['merge', 'model.xml', 'other.xml'], []],
    [['merge', 'model.xml', 'bröken model.xml'], ['bröken model.xml:2']],
    [['script', 'fäils %41.js'], ['fäils %41.js:3']],
    [['script', 'syntax.js'], ['syntax.js:2']],
    [['script', '-e', 'print("x"); perror("said"); missing'], []],
    [['script', '--config', 'config.xml', '-e', '1'], []],
];

let folder;

before(() => {
    folder = mkdtempSync(join(tmpdir(), 'qxp-sarif-'));
    for (const [name, text] of Object.entries(Files)) {
        mkdirSync(dirname(join(folder, name)), { recursive: true });
        writeFileSync(join(folder, name), text);
    }
});
after(() => rmSync(folder, { recursive: true }));

function report(command, format, cwd = folder) {
    const [word, ...rest] = command;
    return spawnSync(process.env.QXP, [word, `--diagnostics=${format}`, ...rest], { cwd, encoding: 'utf8' });
}

const named = ({ uri, region }) => `${fileOf(uri, folder).slice(folder.length + 1)}:${region.startLine}`;

test('the schema refuses what is no report', () => {
    const good = JSON.parse(report(['preprocess', 'bad.txt'], 'sarif').stderr);
    assert.deepEqual(faultsOf(good), []);
    const spoilt = [
        (document) => delete document.version,
        (document) => delete document.runs[0].tool.driver.name,
        (document) => delete document.runs[0].results[0].message,
        (document) => { document.runs[0].results[0].level = 'log'; },
        (document) => { document.runs[0].results[0].locations[0].physicalLocation.region.startLine = 0; },
        (document) => { document.runs[0].results[0].locations[0].physicalLocation.artifactLocation.uri = 'a b'; },
        (document) => { document.runs[0].invocations[0].executionSuccessful = 'no'; },
        (document) => { document.runs[0].invocations[0].nosuch = 1; },
    ];
    for (const spoil of spoilt) {
        const document = structuredClone(good);
        spoil(document);
        assert.notDeepEqual(faultsOf(document), [], spoil.toString());
    }
});

for (const [command, places] of Runs) {
    test(`${command.join(' ')}: the places are real`, () => {
        const { stderr, status } = report(command, 'sarif');
        const run = runOf(stderr, command.join(' '));
        assert.equal(run.invocations[0].executionSuccessful, status === 0);
        assert.equal(run.invocations[0].exitCode, status);
        assert.ok(status === 0 || run.results.some(({ level }) => level === 'error'), stderr);
        const locations = locationsOf(run);
        assert.deepEqual(locations.map(named), places);
        for (const location of locations) {
            const line = lineAt(location, folder);
            if (location.region.snippet)
                assert.equal(location.region.snippet.text, line);
            if (location.region.startColumn)
                assert.ok(location.region.startColumn <= line.length + 1, JSON.stringify(location));
        }
    });
}

/// What both forms say about a diagnostic.
const fromJson = ({ kind, message, file, line, related = [] }) => ({
    level: kind === 'log' ? 'note' : kind, message,
    place: file ? `${file}:${line}` : null,
    related: related.map((note) => note.message),
});
const fromSarif = ({ level, message, locations = [], relatedLocations = [] }) => ({
    level, message: message.text,
    place: locations.map((location) => named({
        uri: location.physicalLocation.artifactLocation.uri, region: location.physicalLocation.region,
    }))[0] ?? null,
    related: relatedLocations.map((location) => location.message.text),
});

test('both forms for tools say the same', () => {
    let seen = 0;
    for (const [command] of Runs) {
        const objects = report(command, 'json').stderr.split('\n').filter(Boolean).map((line) => JSON.parse(line));
        const run = runOf(report(command, 'sarif').stderr, command.join(' '));
        const notifications = run.invocations[0].toolExecutionNotifications ?? [];
        const isLog = ({ kind }) => kind === 'log';
        assert.deepEqual(run.results.map(fromSarif), objects.filter((o) => !isLog(o)).map(fromJson), command.join(' '));
        assert.deepEqual(notifications.map(fromSarif), objects.filter(isLog).map(fromJson), command.join(' '));
        seen += objects.length;
    }
    assert.ok(seen > 25, `${seen} seen`);
});

test('standard input, a name that is no text and one from the root have addresses', () => {
    const shell = (script) => spawnSync('bash', ['-c', script], { cwd: folder, encoding: 'utf8' }).stderr;
    const uris = (script) => locationsOf(runOf(shell(script), script)).map(({ uri }) => uri);
    assert.deepEqual(uris('echo "#nosuch" | "$QXP" preprocess --diagnostics=sarif -'), ['%3Cstdin%3E']);
    assert.deepEqual(uris('printf "#nosuch" >$\'\\xff.txt\'; "$QXP" preprocess --diagnostics=sarif $\'\\xff.txt\''),
        ['%FF.txt']);
    assert.deepEqual(uris('"$QXP" preprocess --diagnostics=sarif "$PWD/a:b.txt"'), [`file://${folder}/a%3Ab.txt`]);
});

/// Stands for qxp in the golden runs, and leaves a report of each run of a command in $REPORTS.
const Substitute = `#!/usr/bin/env bash
case "\${1-}" in
preprocess|tags|expand|merge|script)
    word=$1; shift
    exec "$QXP" "$word" --diagnostics=sarif "$@" 2>"$(mktemp "$REPORTS/XXXXXX")" ;;
esac
exec "$QXP" "$@"
`;

function goldenRuns() {
    const runs = [];
    for (const command of readdirSync(Cases)) {
        for (const name of readdirSync(join(Cases, command))) {
            const file = join(Cases, command, name, 'cmd');
            if (!readFileSync(file, 'utf8').includes('--diagnostics'))
                runs.push(join(command, name));
        }
    }
    return runs;
}

/// The reports of one golden run, in a folder of its own.
function reportsOf(name, bin) {
    const reports = mkdtempSync(join(folder, 'reports-'));
    const work = mkdtempSync(join(folder, 'run-'));
    cpSync(join(Cases, name), work, { recursive: true });
    const env = { ...process.env, PATH: `${bin}:${process.env.PATH}`, REPORTS: reports, LC_ALL: 'C.UTF-8', TERM: 'dumb',
        PROJECT: fileURLToPath(new URL('../..', import.meta.url)) };
    spawnSync('bash', [join(work, 'cmd')], { cwd: work, env, stdio: 'ignore' });
    return readdirSync(reports).map((report) => readFileSync(join(reports, report), 'utf8'));
}

test('the reports of all golden runs follow the schema', () => {
    const bin = mkdtempSync(join(folder, 'bin-'));
    writeFileSync(join(bin, 'qxp'), Substitute);
    chmodSync(join(bin, 'qxp'), 0o755);
    let seen = 0;
    for (const name of goldenRuns()) {
        for (const text of reportsOf(name, bin)) {
            // Help is no report; and there may be no memory for one.
            if (text === '' && name.includes('help') || text === 'qxp: error: Out of memory\n')
                continue;
            const run = runOf(text, name);
            locationsOf(run).forEach(({ uri }) => assert.ok(URL.canParse(uri, 'file:///'), `${name}: ${uri}`));
            seen += run.results.length;
        }
    }
    assert.ok(seen > 150, `${seen} seen`);
});
