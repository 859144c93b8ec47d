'use strict';

// Only the sanitized build detects leaks. Node.js, GNUstep and the Objective-C run time leave many objects behind that
// they made once; leaks of ours grow with the work.

const { assert, runScript, test } = require('./support');

const work = {
  'values and JSON': `
    p.echo('text'); p.echo('你好'); p.echoAutoreleased('text'); p.echoForeign('text');
    p.values.roundTrip('{"a":[1,2.5,18446744073709551615,"x","你好",null,true],"b":{"c":{}},"a":2}');
    p.values.roundTrip('[1,'); p.values.writeUnfit('date');
    p.fromUtf8(p.utf8('Grüße'));`,
  'callbacks and page state': `
    m.setCurrentURL('u', 'w', 't' + round); p.pageState();
    m.setCurrentStateCallbackFunction(() => 'answer'); p.currentMessageText();
    m.setNetworkReachabilityCallbackFunction(() => {}); p.callReachability(true);
    m.setDragAndDropCallbackFunction('no function'); try { p.callDragAndDrop(); } catch {}
    m.setComposeOutgoingMessageCallbackFunction(() => {});
    p.postNotification('TsComposeOutgoingMessageNotification', null, { message: {}, options: {} });
    p.failing.hasPreviousVersion();`,
  queues: `p.platform.post(() => {}); p.platform.postDelayed(1, () => {}); p.platform.background(0, () => {});`,
  'requests and reachability': `
    for (const url of ['http://127.0.0.1:1/', 'nonsense']) {
      const made = m.createRequest(url, { headers: { A: 'b' }, method: 'POST' });
      made.on('error', () => {}); made.start(); made.start();
    }
    m.isNetworkReachable();`,
  'core questions': `m.getBundlePath(); m.getPreferredLanguages(); m.isDarkMode(); m.macOSVersion(); m.loadFScript();`,
};

async function leakedAllocations(t, script, rounds) {
  const source = `
    const p = probe(), m = p.module;
    for (let round = 0; round < ${rounds}; ++round) { ${script} }
    setTimeout(() => {}, 500);`;
  const env = { ASAN_OPTIONS: 'detect_leaks=1:exitcode=0', TESSARO_NATIVE_LOG: '' };
  const { code, stderr } = await runScript(t, source, { env, deadline: 120000 });
  assert.strictEqual(code, 0, stderr);
  return Number(stderr.match(/leaked in (\d+) allocation/)?.[1] ?? 0);
}

if (process.env.TESSARO_SANITIZER_RUNTIME) {
  test('the leak detector sees lost objects', async (t) => {
    const few = await leakedAllocations(t, 'p.leak();', 1);
    assert.strictEqual((await leakedAllocations(t, 'p.leak();', 101)) - few, 100);
  });
  for (const [name, script] of Object.entries(work)) {
    test(`nothing is lost: ${name}`, async (t) => {
      // The first round makes the objects that are made once.
      assert.strictEqual(await leakedAllocations(t, script, 200), await leakedAllocations(t, script, 2));
    });
  }
}
