// Compiled only: what the typings must accept, and what they must refuse.

import * as native from '../../index';

const languages: string[] = JSON.parse(native.getPreferredLanguages());
native.setCurrentURL('https://example.org/', null, undefined);
native.setCurrentURL();
native.setCurrentStateCallbackFunction((question) => (question === 'current-message-text' ? languages[0] : null));
native.setComposeOutgoingMessageCallbackFunction((message, options) => JSON.parse(message + options));
native.setNetworkReachabilityCallbackFunction((isConnected) => native.setStatusItemTitle(null, !isConnected));
native.setDragAndDropCallbackFunction();
const attributes: native.MenuItemAttributes = { title: 'Reload', accelerator: null };
native.updateMainMenuMenuItem(JSON.stringify(['View', 0]), JSON.stringify(attributes));
native.setPasswordForAccount('secret', 'account');

const viewers: native.ApplicationEntry[] = JSON.parse(
  native.applicationsForFileExtension('.pdf', 32, '/icons') ?? '[]',
);
native.openFile('/a.pdf', viewers[0].path, true);
native.clipPage('things', { title: 'Lunch?', 'web-url': 'https://example.org/', attachments: ['/a.pdf'] });

const request = native.createRequest('https://example.org/', { headers: { Accept: '*/*', skipped: 1 }, timeout: 0.5 });
request.on('data', (bytes) => bytes.byteLength);
request.on('end', ({ buffer, statusCode }) => [buffer, statusCode, request.start()]);
// @ts-expect-error there is no such event
request.on('close', () => {});

// @ts-expect-error a function is asserted
native.setSearchServiceCallbackFunction('text');
// @ts-expect-error exactly one argument is asserted
native.getPasswordForAccount();
// @ts-expect-error a window handle is a Buffer
native.hasSheets(1);
// @ts-expect-error platform truth values are numbers
const truth: boolean = native.doesPasteboardContainImage();
