'use strict';

// Makes stores of the previous version: object graphs in the platform's XML store format.

const fs = require('fs');
const path = require('path');

const escaped = (text) => text.replace(/[&<>]/g, (c) => ({ '&': '&amp;', '<': '&lt;', '>': '&gt;' })[c]);

const referenceDate = Date.UTC(2001, 0, 1);

/** The type of an attribute and its text, by the kind of value. */
function encoded(value) {
  if (typeof value === 'boolean') return ['bool', value ? '1' : '0'];
  if (typeof value === 'number') return [Number.isInteger(value) ? 'int32' : 'double', String(value)];
  if (value instanceof Date) return ['date', ((value - referenceDate) / 1000).toFixed(20)];
  if (Buffer.isBuffer(value)) return ['binary', value.toString('base64')];
  return ['string', escaped(value)];
}

// The framework writes entities in capitals and properties in small letters; models have them as in its editor.
const nameStyles = {
  framework: { entity: (name) => name.toUpperCase(), property: (name) => name.toLowerCase() },
  model: { entity: (name) => name, property: (name) => name },
};

const metadata =
  '\n<plist version="1.0">\n<dict>\n<key>NSPersistenceFrameworkVersion</key>\n<integer>407</integer>\n</dict>\n</plist>\n';

class Store {
  /** @param {keyof nameStyles} [style] */
  constructor(style = 'framework') {
    this.style = nameStyles[style];
    this.objects = [];
    this.nextNumber = 101;
  }

  /** Adds an object with its attributes, and gives its identifier. Values that are undefined are left out. */
  add(entity, attributes) {
    const id = `z${++this.nextNumber}`;
    this.objects.push({ entity, id, attributes, relationships: [] });
    return id;
  }

  /** Relates an object that has been added: `ids` is one identifier or a list of them. */
  relate(id, name, destination, ids) {
    const object = this.objects[Number(id.slice(1)) - 102];
    object.relationships.push({ name, destination, ids: [ids].flat(), isToMany: Array.isArray(ids) });
  }

  objectText({ entity, id, attributes, relationships }) {
    const lines = [`    <object type="${this.style.entity(entity)}" id="${id}">`];
    for (const [name, value] of Object.entries(attributes)) {
      if (value === undefined) continue;
      const [type, text] = encoded(value);
      lines.push(`        <attribute name="${this.style.property(name)}" type="${type}">${text}</attribute>`);
    }
    for (const { name, destination, ids, isToMany } of relationships) {
      const references = ids.length > 0 ? ` idrefs="${ids.join(' ')}"` : '';
      const kind = `type="${isToMany ? '0/0' : '1/1'}" destination="${this.style.entity(destination)}"`;
      lines.push(`        <relationship name="${this.style.property(name)}" ${kind}${references}></relationship>`);
    }
    return `${lines.join('\n')}\n    </object>\n`;
  }

  /** The file's text, with `extra` before its end. */
  text(extra = '') {
    return `<?xml version="1.0"?>
<!DOCTYPE database SYSTEM "file:///System/Library/DTDs/CoreData.dtd">

<database>
    <databaseInfo>
        <version>134481920</version>
        <UUID>4DF19FAD-AAB6-4140-8895-0D4A3F1C9E2B</UUID>
        <nextObjectID>${this.nextNumber}</nextObjectID>
        <metadata>${metadata}</metadata>
    </databaseInfo>
${this.objects.map((object) => this.objectText(object)).join('')}${extra}</database>
`;
  }
}

/** A store of objects of one entity, with the objects in their lists: `lists` has the entities of those. */
function storeOf(objects, entity, lists, owner, style) {
  const store = new Store(style);
  for (const object of objects) {
    const attributes = Object.fromEntries(Object.entries(object).filter(([name]) => !(name in lists)));
    const id = store.add(entity, attributes);
    for (const [list, kind] of Object.entries(lists)) {
      const ids = (object[list] || []).map((each) => store.add(kind, each));
      for (const each of ids) store.relate(each, owner, entity, id);
      store.relate(id, list, kind, ids);
    }
  }
  return store;
}

const listsOfAccounts = { bookmarks: 'Bookmark', downloadItems: 'DownloadItem', signatures: 'Signature' };

const accountsStore = (accounts, style) => storeOf(accounts, 'Account', listsOfAccounts, 'account', style);

const workspacesStore = (workspaces, style) =>
  storeOf(workspaces, 'WorkspaceState', { appStates: 'GoogleAppState' }, 'workspaceState', style);

/** The report's entry for an account that is given to `accountsStore`. */
function reported(account, password = null) {
  const orNull = (name) => account[name] ?? null;
  const same =
    'order username nickname detectUnreadCountType defaultInboxType customInboxLabelName unreadMessagesLocation autoBCC ' +
    'notificationSound loadRapportivePlugin loadClearbitConnectPlugin loadBoomerangPlugin loadStreakPlugin loadRightInboxPlugin';
  const blocked = 'isGmailChatBlocked isGooglePlusBlocked isGoogleDriveBlocked isGoogleCalendarAlertsBlocked';
  return {
    ...Object.fromEntries(same.split(' ').map((name) => [name, orNull(name)])),
    ...Object.fromEntries(blocked.split(' ').map((name) => [`${name}AsBOOL`, account[name] ?? false])),
    password,
    isNotificationEnabled: orNull('autoAuthenticate'),
    isNotifyNewMessages: orNull('notificationUseGrowl'),
    numberOfDownloadItems: (account.downloadItems || []).length,
    bookmarks: (account.bookmarks || [])
      .map(({ order = null, title = null, url = null }) => ({ order, title, url }))
      .sort((a, b) => a.order - b.order),
  };
}

/** The files of the previous version, for a user with the home `home`. */
function previousVersion(home) {
  const folder = path.join(home, 'GNUstep', 'Library', 'ApplicationSupport', 'Tessaro 3');
  const files = {
    accounts: path.join(folder, 'Accounts.xml'),
    workspaces: path.join(folder, 'WorkspaceStates.xml'),
    preferences: path.join(home, 'Library', 'Preferences', 'com.tessaro.Tessaro3.plist'),
  };
  /** Writes the named files: { accounts: text, workspaces: text, preferences: bytes }. */
  const write = (contents) => {
    for (const file of Object.values(files)) fs.mkdirSync(path.dirname(file), { recursive: true });
    for (const [name, content] of Object.entries(contents)) fs.writeFileSync(files[name], content);
  };
  return { ...files, folder, write };
}

module.exports = { Store, accountsStore, workspacesStore, reported, previousVersion };
