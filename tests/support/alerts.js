'use strict';

// A process with the module in it, and the alerts that a test has it deliver.

const { scenarios } = require('./scenario');

const clients = scenarios({
  fixture({ captureLog, get, log, native, notifications, sendMessage }) {
    const ends = [];
    captureLog();
    notifications.record('TsNotification');
    native.setNotificationCallbackFunction((...args) => ends.push(args));
    const center = sendMessage('TsUserNotificationCenter', 'defaultUserNotificationCenter');
    const shared = sendMessage('TsUserNotification', 'sharedInstance');
    const texts = ['identifier', 'title', 'subtitle', 'informativeText', 'soundName'];
    const controls = ['hasActionButton', 'actionButtonTitle', 'hasReplyButton', 'responsePlaceholder'];
    const millenniumInUnixTime = 978307200;
    return {
      ...{ ends, shared },
      warnings: () => log(2),
      infoLines: () => log(4),
      debugLines: () => log(8),
      recorded: () => notifications.takeRecorded(),
      remove: (...identifiers) => identifiers.forEach((each) => native.removeUserNotification(each)),
      removeAll: () => native.removeUserNotifications(),
      play: (name) => native.playSoundWithName(name),
      alerts: () => ({
        delivered: get(center, 'deliveredNotifications.identifier'),
        scheduled: get(center, 'scheduledNotifications.identifier'),
      }),
      /** The properties of an alert, by their names. */
      describe: (identifier) => {
        const alert = sendMessage(shared, 'findUserNotificationWithIdentifier:', identifier);
        const properties = Object.fromEntries([...texts, ...controls].map((key) => [key, get(alert, key)]));
        return { ...properties, deliveryDate: get(alert, 'deliveryDate') + millenniumInUnixTime };
      },
      /** Delivers an alert; what is left out is null. */
      deliver: (identifier, alert = {}) => {
        const { title = identifier, subtitle, text, sound, reply, placeholder, action, actionTitle, at } = alert;
        const args = [title, subtitle, text, sound, reply, placeholder, action, actionTitle, at];
        native.deliverUserNotification(identifier, ...args.map((arg) => arg ?? null));
      },
    };
  },
});

/** Functions of the fixture that tests call from outside. */
const offered = 'alerts debugLines deliver describe infoLines play recorded remove removeAll warnings'.split(' ');

/** Starts the process. */
async function startClient(test, options = {}) {
  const client = await clients.with(options).resident(test);
  const call = (fixture, name, args) => fixture[name](...args);
  for (const name of offered) client[name] = (...args) => client.tell(call, name, args);
  return Object.assign(client, {
    /** Waits until the alert is on screen. */
    isDelivered: () => client.until(({ recorded }) => recorded().some(([name]) => name === 'TsNotificationDidDeliver')),
    /** Waits until as many ends have been reported to the callback, by default none, and gives them. */
    async ends(count = 0) {
      await client.until(({ ends }, least) => ends.length >= least, count);
      return client.tell(({ ends }) => ends);
    },
    /** Waits for a warning, and gives the first one. */
    async warned() {
      await client.until(({ warnings }) => warnings().length > 0);
      return (await client.warnings())[0];
    },
  });
}

module.exports = { startClient };
