// The pages of the project, for tests.
import fs from 'node:fs';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

export const root = fileURLToPath(new URL('../..', import.meta.url));

/** All pages, as paths from the root. */
export const pages = ['.', 'docs', 'editors'].flatMap((folder) =>
    fs.readdirSync(path.join(root, folder)).filter((name) => name.endsWith('.md')).map((name) => path.join(folder, name)));

/** A page in its parts: lines of text and headings, and the lines of its blocks. */
export function parts(text) {
    const found = { lines: [], headings: [], blocks: [] };
    let fence = null;
    text.split('\n').forEach((line, index) => {
        if (fence !== null) {
            if (line.startsWith(fence))
                fence = null;
            else
                found.blocks.push({ line, number: index + 1 });
        } else if (/^```/.test(line))
            fence = /^`+/.exec(line)[0];
        else {
            found.lines.push({ line, number: index + 1 });
            if (/^#+ /.test(line))
                found.headings.push(line.replace(/^#+ /, ''));
        }
    });
    return found;
}

/** The anchor of a heading. */
export const slug = (heading) =>
    heading.toLowerCase().replace(/`/g, '').replace(/[^a-z0-9 _-]/g, '').replace(/ /g, '-');

/** What the links of a text lead to, code left out. */
export const links = (text) =>
    [...text.replace(/`[^`]*`/g, '').matchAll(/\]\(([^() ]+)\)/g)].map((match) => match[1]);

/** The broken links of a page; `exists` and `readPage` tell of other files, by their paths from the root. */
export function brokenLinks(page, readPage, exists) {
    const broken = [];
    for (const { line, number } of parts(readPage(page)).lines) {
        for (const link of links(line)) {
            if (/^[a-z]+:/.test(link))
                continue;
            const [target, anchor] = link.split('#');
            const file = target ? path.join(path.dirname(page), target) : page;
            const isThere = exists(file) &&
                (!anchor || (file.endsWith('.md') && parts(readPage(file)).headings.map(slug).includes(anchor)));
            if (!isThere)
                broken.push(`${page}:${number}: ${link}`);
        }
    }
    return broken;
}
