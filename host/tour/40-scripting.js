'use strict';

const { ok, notOffered, failed } = require('./rows');

exports.title = 'Scripted message';
exports.needs = ['module'];

const name = 'org.tessaro.TessaroHost';
const path = '/org/tessaro/TessaroHost';
const application = 'org.tessaro.Application';

// Another process, at the same bus.
const busctl = (stage, ...args) => stage.run('busctl', '--user', ...args.map(String));

async function script(stage) {
  const made = await busctl(
    stage,
    ...['call', name, path, application, 'MakeOutgoingMessage', 'a{sv}', 2],
    ...[
      'Subject',
      's',
      'Lunch? 🥗',
      'ToRecipients',
      'aa{sv}',
      1,
      2,
      'address',
      's',
      'bob@example.org',
      'name',
      's',
      'Bob',
    ],
  );
  const object = made?.match(/"(.+)"/)?.[1];
  if (object === undefined) return undefined;
  const message = (...args) => busctl(stage, args[0], name, object, 'org.tessaro.OutgoingMessage', ...args.slice(1));
  await message('set-property', 'Content', 's', 'At one?\nAnn');
  await message('call', 'AddMailAttachment', 's', '~/menu.pdf');
  await message('call', 'SetVisible', 'b', 'true');
  return object;
}

exports.run = async (stage) => {
  if (!process.env.DBUS_SESSION_BUS_ADDRESS) return notOffered('Scripted message', 'there is no session bus');
  if ((await stage.run('busctl', '--version')) === undefined) {
    return notOffered('Scripted message', 'busctl is not installed');
  }
  const received = [];
  stage.module.setComposeOutgoingMessageCallbackFunction((text) => received.push(JSON.parse(text)));

  const object = await script(stage);
  if (object === undefined) return failed('Scripted message', 'no message could be made');
  const scripted = (await stage.until(() => received.length === 1))
    ? ok('Scripted message', `busctl composed ${object}: ${JSON.stringify(received[0])}`)
    : failed('Scripted message', `${object} did not reach script`);

  const link = 'mailto:carla@example.org?subject=Minutes%20%C3%A0%20lire';
  await busctl(stage, 'call', name, path, application, 'OpenLink', 's', link);
  const linked = await stage.until(() => received.find(({ subject }) => subject === 'Minutes à lire'));
  const title = await busctl(stage, 'get-property', name, path, application, 'CurrentTitle');
  return [
    scripted,
    linked ? ok('mailto: link', `${link} is a message to ${linked.to[0].email}`) : failed('mailto: link', link),
    title ? ok('Scripted page', `CurrentTitle is ${title.trim()}`) : failed('Scripted page', 'it cannot be read'),
  ];
};
