// SPDX-License-Identifier: MIT
// Drives the pages of "vok show --html" and "vok diff --html" as a person does.
//     node pages.mjs VOK FOLDER       with CHROMIUM, else /usr/bin/chromium
import assert from 'node:assert/strict';
import {execFileSync, spawnSync} from 'node:child_process';
import {mkdirSync, writeFileSync} from 'node:fs';
import {resolve} from 'node:path';
import {chromium} from 'playwright-core';

const [vok, folder] = process.argv.slice(2).map(path => resolve(path));
mkdirSync(folder, {recursive: true});
const file = name => resolve(folder, name);
const url = name => 'file://' + file(name);

// A document that would like to be more than data, and a long run.
const evil = "&lt;/script&gt;&lt;script&gt;document.title='taken'&lt;/script&gt;&lt;img src=x onerror=alert(1)&gt;";
const items = Array.from({length: 2000}, (_, i) => `<x>${i}</x>`).join('');
writeFileSync(file('a.xml'), `<R><a k="${evil}">${evil}</a><list><i>1</i><i>two</i><to CDNodeIDREF="ID1"/></list>` +
  `<m>${items}</m><t CDNodeID="ID1"/></R>`);
writeFileSync(file('b.xml'), `<R><a k="${evil}">other ${evil}</a><list><i>1</i><i>three</i></list><m>${items}</m>` +
  `<new id="7"><deep><er>end</er></deep></new><t/></R>`);
execFileSync(vok, ['show', '--html', file('a.xml'), '-o', file('tree.html')]);
execFileSync(vok, ['convert', file('a.xml'), file('a.dgraph')], {stdio: 'ignore'});
execFileSync(vok, ['show', '--html', '--bytes', file('a.dgraph'), '-o', file('bytes.html')]);
assert.equal(spawnSync(vok, ['diff', '--html', file('a.xml'), file('b.xml'), '-o', file('diff.html')]).status, 1);

const browser = await chromium.launch({
  executablePath: process.env.CHROMIUM || '/usr/bin/chromium',
  args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
    '--disable-component-update', '--disable-sync'],
});
let passed = 0;
async function test(name, page, body) {
  const tab = await browser.newPage();
  const escaped = [];
  tab.on('dialog', dialog => { escaped.push(dialog.message()); dialog.dismiss(); });
  tab.on('request', request => { if (!request.url().startsWith('file://')) escaped.push(request.url()); });
  tab.on('pageerror', error => escaped.push(String(error)));
  await tab.goto(url(page));
  await body(tab);
  assert.deepEqual(escaped, [], name);
  assert.equal(await tab.locator('img').count(), 0, name);
  assert.notEqual(await tab.title(), 'taken', name);
  await tab.close();
  ++passed;
}
const current = tab => tab.locator('#path').textContent();

try {
  await test('a click opens and closes', 'tree.html', async tab => {
    const list = tab.locator('.row', {hasText: 'list'}).first();
    await list.click();
    assert.equal(await current(tab), '/list[0]');
    assert.equal(await tab.locator('.row', {hasText: 'two'}).isVisible(), true);
    await list.click();
    assert.equal(await tab.locator('.row', {hasText: 'two'}).isVisible(), false);
  });
  await test('keys walk', 'tree.html', async tab => {
    for (const key of ['ArrowDown', 'ArrowDown', 'ArrowRight', 'ArrowDown', 'ArrowDown']) await tab.keyboard.press(key);
    assert.equal(await current(tab), '/list[0]/i[1]');
    await tab.keyboard.press('ArrowLeft');
    assert.equal(await current(tab), '/list[0]');
    await tab.keyboard.press('Home');
    assert.equal(await current(tab), '/');
  });
  await test('a link jumps', 'tree.html', async tab => {
    await tab.locator('.row', {hasText: 'list'}).first().click();
    await tab.locator('.Link').click();
    assert.equal(await current(tab), '/t[0]');
  });
  await test('searching finds what has no row yet', 'tree.html', async tab => {
    await tab.keyboard.press('/');
    await tab.keyboard.type('1999');
    await tab.keyboard.press('Enter');
    assert.equal(await current(tab), '/m[0]/x[1999]');
    assert.equal(await tab.locator('#count').textContent(), '1 of 1');
    assert.equal(await tab.locator('.row.current').isVisible(), true);
  });
  await test('a long run comes in pieces', 'tree.html', async tab => {
    await tab.locator('.row', {hasText: '(2000)'}).click();
    assert.equal(await tab.locator('.row').count() < 600, true);
    await tab.locator('.more').click();
    assert.equal(await tab.locator('.row').count() > 1000, true);
  });
  await test('bytes of the node', 'bytes.html', async tab => {
    await tab.locator('.row', {hasText: 'list'}).first().click();
    const text = await tab.locator('#bytes').textContent();
    assert.match(text, /^16 bytes at \d+\n[0-9a-f]{8}  07 00 00 00 6c 69 73 74 5b 30 5d 00 03 00 00 00 +\.\.\.\.list\[0\]/);
  });
  await test('no bytes unless wanted', 'tree.html', async tab => {
    assert.equal(await tab.locator('#bytes').isVisible(), false);
  });
  await test('both sides', 'diff.html', async tab => {
    assert.equal(await tab.locator('.difference').count(), 4);
    const changed = tab.locator('.difference', {hasText: '/list[0]/i[1]'});
    assert.equal(await changed.locator('.old mark').textContent(), 'wo');
    assert.equal(await changed.locator('.new mark').textContent(), 'hree');
    const added = tab.locator('.difference', {hasText: '/new[0]'});
    await added.locator('.node').click();
    await added.locator('.node', {hasText: 'deep'}).click();
    assert.equal(await added.locator('.node', {hasText: 'end'}).isVisible(), true);
    assert.equal(await added.locator('.old').textContent(), '(none)');
  });
  await test('kinds and texts narrow the list', 'diff.html', async tab => {
    await tab.getByLabel('value (2)').uncheck();
    assert.equal(await tab.locator('.difference').count(), 2);
    await tab.locator('#query').fill('deep');
    assert.equal(await tab.locator('#count').textContent(), '1 of 4 differences');
    await tab.locator('#query').fill('nowhere');
    assert.equal(await tab.locator('#count').textContent(), '0 of 4 differences');
    await tab.locator('#query').fill('/new');
    await tab.keyboard.press('Enter');
    assert.equal(await tab.locator('.difference.current .where').textContent(), '/new[0] only in B');
  });
} finally {
  await browser.close();
}
console.log(`${passed} passed, 0 failed`);
