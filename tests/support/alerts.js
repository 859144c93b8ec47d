'use strict';

// A process with the module in it, and the alerts that a test has it deliver.

const { scenarios } = require('./scenario');

const clients = scenarios({
  fixture({ captureLog, log, native, notifications }) {
    const told = [];
    captureLog();
    notifications.record();
    native.setNotificationCallbackFunction((...args) => told.push(args));
    return {
      told,
      warnings: () => log(2),
      infoLines: () => log(4),
      debugLines: () => log(8),
      /** Delivers an alert; what is left out is null. */
      deliver: (identifier, alert = {}) => {
        const { title = identifier, subtitle, text, sound, reply, placeholder, action, actionTitle, at } = alert;
        const args = [title, subtitle, text, sound, reply, placeholder, action, actionTitle, at];
        native.deliverUserNotification(identifier, ...args.map((arg) => arg ?? null));
      },
    };
  },
});

/** Starts the process. */
async function startClient(test, options = {}) {
  const client = await clients.with(options).resident(test);
  return Object.assign(client, {
    deliver: (...alert) => client.tell(({ deliver }, ...args) => deliver(...args), ...alert),
    remove: (...identifiers) =>
      client.tell(({ native }, all) => all.forEach((id) => native.removeUserNotification(id)), identifiers),
    play: (name) => client.tell(({ native }, sound) => native.playSoundWithName(sound), name),
    alerts: () => client.tell(({ notifications }) => notifications.alerts()),
    recorded: () => client.tell(({ notifications }) => notifications.takeRecorded()),
    describe: (identifier) => client.tell(({ notifications }, id) => notifications.describe(id), identifier),
    warnings: () => client.tell(({ warnings }) => warnings()),
    told: () => client.tell(({ told }) => told),
    /** Waits until the alert is on screen. */
    isDelivered: () =>
      client.until(({ notifications }) =>
        notifications.takeRecorded().some(([name]) => name === 'TsNotificationDidDeliver'),
      ),
    /** Waits until the callback has been told of as many ends, and gives them. */
    async ends(count) {
      await client.until(({ told }, least) => told.length >= least, count);
      return client.tell(({ told }) => told);
    },
    /** Waits for a warning, and gives the first one. */
    async warned() {
      await client.until(({ warnings }) => warnings().length > 0);
      return (await client.tell(({ warnings }) => warnings()))[0];
    },
  });
}

module.exports = { startClient };
