/// <reference types="node" />

/**
 * TessaroNative: what a mail client's main process needs of the desktop and script can't do by itself.
 *
 * Every function is called on the main thread. Arguments are a contract: a call that breaks it ends the process with
 * an assertion that names the condition. Nothing is thrown; what fails is logged and told by the result. Where the
 * desktop can't offer something, the result is the one that says "nothing": `null`, `undefined`, `false`, 0 or empty.
 *
 * Functions marked _not available yet_ check their contract, log a warning and answer "nothing".
 */

/** An opaque reference to a native window: a Buffer of 8 bytes. That of a window which is gone stands for nothing. */
export type WindowHandle = Buffer;

/** A text that holds JSON. Arrays and dictionaries always cross the boundary this way. */
export type JSONText = string;

/** A platform truth value. */
export type Truth = 0 | 1;

type Text = string | null | undefined;

// ---- Module core

/** Loads the FScript object browser, if it is installed, and adds its menu. For developers. */
export function loadFScript(): void;

/**
 * Says which page is shown: its own URL, its URL on the web and its title. Other applications' scripting and the drag
 * of a window's title use them. Any value is taken by its string form; missing ones are forgotten.
 */
export function setCurrentURL(url?: unknown, webURL?: unknown, title?: unknown): null;

/**
 * Sets the function that native code asks about the page.
 * @param callback Called with `"current-message-text"`; returns that text, or nothing when there is no message.
 */
export function setCurrentStateCallbackFunction(callback: (question: 'current-message-text') => Text): null;

/** Path of the application's main bundle. */
export function getBundlePath(): string;

/** The user's languages in order of preference, as a JSON array of BCP 47 identifiers. */
export function getPreferredLanguages(): JSONText;

/** Whether the desktop's appearance is dark. */
export function isDarkMode(): boolean;

/** Version of the operating system: a macOS version, or the Linux distribution's own number. */
export function macOSVersion(): string | undefined;

// ---- Keychain

/**
 * The account's password in the user's keychain: `{"ok?": true, "password": string | null}`, with null when there is
 * none, or `{"ok?": false, "error": status}`. Waits while the person is asked to open the keychain.
 */
export function getPasswordForAccount(account: string): JSONText;

/**
 * Stores a password in place of the account's present one: `{"ok?": true}` or `{"ok?": false, "error": status}`.
 * The password comes first. Without a password or an account nothing is done, and `undefined` is the result.
 */
export function setPasswordForAccount(password: unknown, account: unknown, ignored?: unknown): JSONText | undefined;

/** Whether there was a password, and it could be removed, is told by the log only. */
export function removePasswordForAccount(account: string): void;

/** Removes the passwords of all accounts of this application. */
export function removeAllPasswords(): void;

// ---- User notifications and sounds

/**
 * Shows an alert in the notification centre, in place of an earlier one with the same identifier.
 * @param identifier Names the alert in the activation callback and for its removal.
 * @param soundName One of `getSoundNames()`; missing: silent.
 * @param hasReplyButton With it, the alert has no action button, whatever the arguments after it say.
 * @param deliverAt Seconds since 1970, as text or number; missing: at once. What has passed, or is no number, is
 *   delivered ten seconds from now. Scheduled alerts outlive the process.
 */
export function deliverUserNotification(
  identifier: string,
  title: Text,
  subtitle: Text,
  informativeText: Text,
  soundName: Text,
  hasReplyButton: unknown,
  responsePlaceholder: Text,
  hasActionButton: unknown,
  actionButtonTitle: Text,
  deliverAt: unknown,
): void;

/** Withdraws every alert, delivered or scheduled. */
export function removeUserNotifications(): void;

/** Withdraws the delivered alert of this identifier, or else the scheduled one. Nobody is told of its end. */
export function removeUserNotification(identifier: string): void;

/** What became of an alert. */
export type NotificationActivation =
  | 'none'
  | 'contents-clicked'
  | 'action-button-clicked'
  | 'replied'
  | 'additional-action-clicked'
  | 'unknown'
  | 'dismissed'
  | 'response-changed';

/**
 * Sets the function that learns what the user did with an alert. `response` is the text of a reply, and empty without
 * one. Any value is kept; one that is not a function fails when an alert is used.
 */
export function setNotificationCallbackFunction(
  callback?: (identifier: string, type: NotificationActivation, response: string) => void,
): void;

/** The system's playable sounds, sorted. The list is made once in a process. */
export function getSoundNames(): string[];

/** Plays a sound of the list, and cuts off the one before. Whether there is such a sound. */
export function playSoundWithName(name?: unknown): boolean;

// ---- Windows and toolbar

/**
 * Gives the window a toolbar. `windowId` is your own number for the window, by which the functions below find it.
 * A definition without "identifier", "items" or "options" ends the process.
 */
export function addToolbarToWindow(window: WindowHandle, windowId: number, definition: JSONText): void;

/** Sets the three functions of all toolbars; each replaces the earlier one. */
export function setToolbarCallbackFunctions(
  validation: (windowId: number, itemIdentifier: string) => boolean,
  action: (windowId: number, itemIdentifier: string) => void,
  addTab: (windowId: number) => void,
): void;

/** Does nothing; kept for callers of earlier versions. */
export function reenableWindowUpdates(): void;

/**
 * Sets the function that learns of "did-become-main", "did-resign-main", "did-become-key" and "did-resign-key" of
 * browser windows. Any value is kept; one that is not a function fails when an event
 * comes.
 */
export function setWindowNotificationCallbackFunction(callback?: (event: string, window: WindowHandle) => void): void;

/** Whether a window of the application is the main window. */
export function hasMainWindow(): boolean;

/** Whether a window of the application receives the keys. */
export function hasKeyWindow(): boolean;

/** Whether a sheet is attached to the window. */
export function hasSheets(window: WindowHandle): boolean;

/** Closes the main window, if there is one. */
export function closeMainWindow(): void;

/** Closes the window that receives the keys, if there is one. */
export function closeKeyWindow(): void;

/**
 * Makes the window’s content invisible for a while; afterwards it has the focus.
 * @param duration In milliseconds.
 */
export function hideWindowContent(window: WindowHandle, duration: number): void;

/** Asks the validation function for every visible item. */
export function validateToolbarItems(windowId: number): void;

/** Makes an item the selected one. */
export function selectToolbarItem(windowId: number, itemIdentifier: string): void;

/** Hides the toolbar, or shows it again. */
export function toggleToolbarVisibility(windowId: number): void;

/** Whether the toolbar is shown; false without one. */
export function isToolbarVisible(windowId: number): boolean;

/** Opens the palette from which the user arranges the toolbar. */
export function customizeToolbar(windowId: number): void;

/** Gives the first visible button with the identifier another image of the application’s. */
export function changeImageOfToolbarItem(windowId: number, itemIdentifier: string, imageName: string): void;

/** Shows the add-tab button. While the palette is open, it comes when that has closed. */
export function showAddTabButton(windowId: number): void;

/** Hides the add-tab button. */
export function hideAddTabButton(windowId: number): void;

/** Keeps a function of which the module makes no use. */
export function setQueryWindowTraitCallbackFunction(callback: unknown): void;

/** Gives the window’s content a size in points, and keeps the window’s top edge where it is. */
export function resizeWindowContent(window: WindowHandle, width: number, height: number): void;

// ---- Main menu and keyboard

/**
 * What can be changed of a menu item. Other keys, and values of other types, are logged and passed over.
 * `accelerator` is the key behind the last "+", and any of "Cmd", "Ctrl", "Opt" and "Shift" before it; `null` removes
 * the shortcut.
 */
export interface MenuItemAttributes {
  title?: string;
  visible?: boolean;
  accelerator?: string | null;
}

/**
 * Changes the item of the main menu to which a path leads.
 * @param navigationPath JSON array, from the main menu's items on. A number takes the item with that index and goes on
 *   in its submenu; a string skips the items before the one with that title, so that a number behind it counts from there.
 * @param attributes JSON of `MenuItemAttributes`.
 * @returns 1, or 0 when the path leads nowhere; the log says why.
 */
export function updateMainMenuMenuItem(navigationPath: JSONText, attributes: JSONText): Truth;

/**
 * Changes the item of the main menu whose represented object has the number under "commandId". All identifiers are
 * learnt at the first call; items that come later are not found.
 * @param attributes JSON of `MenuItemAttributes`.
 * @returns 1, or 0 when there is no such item.
 */
export function updateMainMenuMenuItemWithCommandId(commandId: number, attributes: JSONText): Truth;

/**
 * From now on "TsAppMenuWillOpen" and "TsAppMenuDidClose" are posted for the menus of the main menu as it is now. Call
 * it again when the menu has been replaced.
 */
export function setupMenuWillShowNotification(): void;

/**
 * Sets the function that learns of changes of the modifier keys. Any value is kept; one that is not a function fails
 * when a key changes.
 */
export function setKeyboardModifierKeysCallbackFunction(
  callback?: (
    functionKey: boolean,
    control: boolean,
    option: boolean,
    command: boolean,
    shift: boolean,
    capsLock: boolean,
    help: boolean,
    numericPad: boolean,
  ) => void,
): void;

/**
 * The event that the application is at work on, as a JSON dictionary of booleans: "mouse?", "keyboard?",
 * "function-modifier?", "control-modifier?", "option-modifier?", "command-modifier?" and "shift-modifier?". `null` when
 * there has been no event.
 */
export function modifierKeys(): JSONText | null;

/** Whether the user has hidden the application. */
export function isAppHidden(): boolean;

// ---- Drag and drop, pasteboard

/**
 * Drops files on the page as if the user had dragged them there; the drag-and-drop function is not called.
 * @param point `{"x": 10, "y": 20}`, in points from the window’s lower left corner.
 * @param paths An array of paths.
 * @returns The page’s answer, false for texts that are none of these, undefined when there is no such window.
 */
export function dropFiles(window: WindowHandle, point: JSONText, paths: JSONText): boolean | undefined;

/**
 * Sets the function that learns of files being dragged over a page: "dragging-entered", "dragging-updated",
 * "dragging-exited" and "perform-drag-operation", each before the page does. Any value is kept; one that is not a function fails when a drag comes.
 */
export function setDragAndDropCallbackFunction(
  callback?: (event: string, window: WindowHandle, paths: JSONText) => unknown,
): void;

/**
 * Keeps a copy of everything on the general pasteboard, in all its types. False when one is kept already, which stays,
 * or when what is there can’t be had.
 */
export function saveGeneralPasteboard(): boolean;

/** Puts back what was kept, and forgets it. False when nothing was kept. */
export function restoreGeneralPasteboard(): boolean;

/** Replaces the general pasteboard by the contents of a PNG, JPEG or GIF file; other files are refused. */
export function writeFileContentsToGeneralPasteboard(path: string): boolean;

/** The strings of that type on the general pasteboard, one an item: a JSON array, empty when there are none. */
export function getValueOfPasteboardType(type: string): JSONText | null;

/** 1 when an image can be made of what is on the general pasteboard. */
export function doesPasteboardContainImage(): Truth;

/**
 * Writes the image on the general pasteboard as a file, and gives its path; `null` when there is none, or it can't be
 * written. PNG, JPEG and GIF stay what they are, others become PNG: "Pasted Image.png", with a number when that is
 * taken. Of an image file that was copied, a copy under its own name.
 * @param targetDirectory Made when it is missing.
 */
export function imageFromPasteboard(targetDirectory: string): string | null;

/** What was last searched for, in any application. */
export function getFindStringFromPasteboard(): string | null;

/** Tells all applications what is searched for. */
export function setFindStringToPasteboard(text: unknown): void;

// ---- Images, previews, sharing, files, dialogs

/** 1 when the file's contents, whatever its name, are a PNG, JPEG, GIF, WebP or AVIF, which every web view shows. */
export function isWebImagePath(path: string): Truth;

/**
 * Writes a copy of an image that is no larger than so many pixels, and gives its path; `null` when the image is broken
 * or cut off, can't be read, or the copy can't be written. Waits for at most two seconds; an image that takes longer
 * gives `null`, too.
 *
 * The copy keeps shape, alpha and the frames of animations, is turned the way that the image is shown, has sRGB colours
 * and no other metadata, and is never larger than the image. An image that fits, in the wanted format, is copied as it
 * is.
 * @param target A folder that is there: the copy is called like the image, with a number when that is taken. Otherwise
 *   the copy's file, which is replaced at once and completely, in the format of its extension: png, jpg, jpeg, gif, webp,
 *   tif or tiff. With another extension, or none, and in a folder it has the image's format; where that can't be
 *   written, it is a PNG, or a JPEG of a HEIC or AVIF without alpha.
 * @param maxWidth In pixels; 0 or less for any.
 * @param maxHeight In pixels; 0 or less for any.
 */
export function scaleImage(path: string, target: string, maxWidth: number, maxHeight: number): string | null;

/**
 * Opens an editor in which the user draws arrows and boxes on an image, writes on it, and blurs parts of it. What is
 * saved is a copy, beside the image and in its format: "photo annotated.jpg". Images of more than 6000 pixels in a row
 * are edited, and saved, in that size.
 *
 * At the end the host receives the notification "TsImageAnnotated", with the image's path under "original" and, if one was
 * saved, the copy's under "path".
 * @param callback If it is a function, it is called once, on a later turn: with the path of the copy, or with `null` when
 *   the user has cancelled, or the image can't be shown or the copy not be written.
 */
export function annotateImage(path: string, callback: ((copy: string | null) => void) | unknown): void;

/**
 * Asks the user whether to record the screen or an area of it, and records a film without sound until it is stopped,
 * for an hour at most: "Screen Recording 2026-11-21 at 10.15.30.mp4" (.mov on macOS), which appears when it is complete.
 * One film is made at a time.
 *
 * At the end the host receives the notification "TsScreenRecorded", with the film's path under "path" if there is one.
 * @param targetDirectory Made when it is missing.
 * @param callback If it is a function, it is called once, on a later turn: with the path of the film, or with `null` when
 *   the user has cancelled or nothing can be recorded; the log says why.
 */
export function takeScreenRecording(targetDirectory: string, callback: ((film: string | null) => void) | unknown): void;

/**
 * Shows files, one at a time, in a panel over a window: images, the first pages of PDFs, beginnings of texts, icons of
 * others. Arrow keys and buttons turn over; Escape, Space and the end of the window close it. There is one panel: it is
 * closed before it shows other files.
 * @param paths JSON array of paths.
 * @param index Of the file that is shown first; the first one where there is none of that index.
 * @param callback Called once, on a later turn, when the panel has been closed: with the path of the file that was shown
 *   last, or with `null` when there was no such window, no file or no display.
 */
export function quickLook(
  window: WindowHandle,
  paths: JSONText,
  index: number,
  callback: (lastPath: string | null) => void,
): void;

/**
 * Offers, in a menu, what the desktop has to pass files on to: mail programs other than this one, Bluetooth, and the
 * applications that open every one of the files. The one that is chosen is started with them. Script waits while the
 * menu is open, as with every menu, but not in this call.
 * @param paths An array of paths. Files that aren't there are left out; without any there is no menu, but a log line.
 * @param rectangle `{"x", "y", "width", "height"}` of what the menu is to appear below, in points from the upper left
 *   of the window's content, as `getBoundingClientRect()` gives it. What is missing is 0.
 */
export function shareFiles(window: WindowHandle, paths: JSONText, rectangle: JSONText): void;

/**
 * Writes a PNG that shows what is in a file: an image, the first page of a PDF, or the beginning of a text. The same file
 * in the same size has the same preview, which is replaced.
 * @param size Width and height at most, in pixels; 8192 where it is more. Smaller images keep their size.
 * @param targetDirectory Made when it is missing.
 * @param callback Called once, on a later turn: with the path of the preview, or with `null` when there is none.
 */
export function generatePreview(
  path: string,
  size: number,
  targetDirectory: string,
  callback: (preview: string | null) => void,
): void;

/** The options of `showFileDialog`, as JSON. Where a text is missing, the dialog has the system's own. */
export interface FileDialogOptions {
  /** `"open"` by default. */
  type?: 'open' | 'save';
  title?: string;
  message?: string;
  'button-label'?: string;
  /** Path of the folder to begin in; by default the folder used last. */
  folder?: string;
  /** For saving: the suggested name. Slashes and leading dots are replaced or dropped. */
  name?: string;
  /**
   * The files to show, by extensions without dots, in any case; `"*"`, or none, for all. The first filter applies until
   * the user selects another. The suggested name gets the first extension of the first filter when it has none of them.
   */
  filters?: { name: string; extensions: string[] }[];
  /** For opening; `true` by default. */
  'choose-files?'?: boolean;
  /** For opening. */
  'choose-folders?'?: boolean;
  /** For opening. */
  'allow-multiple?'?: boolean;
  /** To begin with. */
  'show-hidden?'?: boolean;
}

/**
 * Lets the user choose files in the system's dialog over the window, and returns at once. The dialog asks the user
 * before a file is overwritten.
 * @param options `FileDialogOptions`.
 * @param callback Called exactly once, later: with an array of absolute paths, also for a single one, or with null:
 *   when the user chose nothing, the window was closed, the window has such a dialog already, or, with a line in the
 *   log, when no dialog could be shown.
 */
export function showFileDialog(
  window: WindowHandle,
  options: JSONText,
  callback: (paths: JSONText | null) => void,
): void;

/**
 * Writes a file, completely or not at all: it is replaced at once when its new contents are on the disk. Its
 * permissions are kept; of a link, the file it leads to is written. Waits for the disk.
 * @param data A Buffer, another typed array, a DataView or an ArrayBuffer.
 * @param append Adds to the end of the file instead. After an error it is as long as before.
 * @returns Why it could not be written, in words; `undefined` when it has been. Folders are not made, and only regular
 *   files are written: a pipe or a device is refused.
 */
export function writeFile(path: string, data: object, append: boolean): string | undefined;

/**
 * Opens the window in which the user writes to the makers of the application. What is sent goes to the host as the
 * notification "TsSupportAndFeedbackMessageNotification"; `docs/api/files.md` tells its keys. If the window is open, it comes
 * to the front and gets the attachments, but keeps what has been written.
 * @param name Of the user.
 * @param email Where an answer goes to.
 * @param subject null for none.
 * @param message What the message begins with; null for nothing.
 * @param attachments An array of paths, null for none. Files that aren't there, and folders, are left out.
 */
export function openSupportAndFeedbackWindow(
  name: string,
  email: string,
  subject: string | null,
  message: string | null,
  attachments: JSONText | null,
): void;

/** Adds an array of files to the window for support and feedback, which is opened if it isn't. */
export function attachFilesToSupportAndFeedbackWindow(paths: JSONText): void;

// ---- Applications and default handlers

/** What `applicationsForFileExtension` and `applicationsForScheme` tell of an application. */
export interface ApplicationEntry {
  path: string;
  name: string;
  'bundle-id': string;
  'default?': boolean;
  'our-entry?': boolean;
  /** Path of the icon, or "". */
  'image-path': string;
}

/**
 * The applications that open files of an extension, with or without its dot, the default one first: a JSON array of `ApplicationEntry`.
 * @param imageSize Of the icons, in pixels.
 * @param targetDirectory Where the icons are written, unless they are there; none are without one.
 */
export function applicationsForFileExtension(
  extension: unknown,
  imageSize: unknown,
  targetDirectory: unknown,
): JSONText | null;

/**
 * The applications that open URLs of a scheme, the default one first: a JSON array of `ApplicationEntry`.
 * @param imageSize Of the icons, in pixels.
 * @param targetDirectory Where the icons are written, unless they are there; none are without one.
 */
export function applicationsForScheme(
  scheme: unknown,
  imageSize: unknown,
  targetDirectory: unknown,
): JSONText | undefined;

/** The bundle identifier of this application. */
export function bundleId(): string | null;

/** The bundle identifier of the application that opens URLs of a scheme; `undefined` when there is none. */
export function defaultApplicationForScheme(scheme: string): string | undefined;

/** Makes an application the user’s default for a scheme. 1 when the system has accepted it. */
export function setDefaultApplicationForScheme(scheme: string, bundleIdentifier: string): Truth;

/** Writes the icon of a kind of files as PNG, and gives its path. @param size In pixels, 1 to 1024. */
export function iconForFileExtension(extension: string, size: number, targetDirectory: string): string | undefined;

/**
 * Opens a file. 1 when the application could be started.
 * @param applicationPath An entry’s "path", or a bundle identifier; empty for the default application.
 * @param deactivate Whether this application steps back.
 */
export function openFile(path: unknown, applicationPath: unknown, deactivate: unknown): Truth;

/** Shows the file manager’s information about a file. Whether the file manager did. */
export function openInfoForFile(path: unknown): boolean;

/** Whether there is an application of that bundle identifier. */
export function isApplicationInstalled(bundleIdentifier: string): boolean;

/** Writes the icon of an application as PNG, and gives its path. @param size In pixels, 1 to 1024. */
export function iconForApplication(bundleIdentifier: string, size: number, targetDirectory: string): string | undefined;

/** What an application is called; `null` when it isn’t installed. */
export function applicationName(bundleIdentifier: string): string | null;

// ---- Clipping and importing into other applications

/** The page or mail that is handed on. What is missing counts as empty. */
export interface ClippedPage {
  /** Opens it in this client. */
  url?: string;
  /** Opens it in the web interface. */
  'web-url'?: string;
  title?: string;
  html?: string;
  /** Of a file with the HTML. */
  'html-path'?: string;
  account?: string;
  /** Of the mail as a file. */
  'eml-path'?: string;
  /** Paths. */
  attachments?: string[];
}

/** Hands a file to Evernote, DEVONthink, Photos or Receipts. */
export function importIntoApplication(bundleIdentifier: string, path: string): void;

/** Opens a file in the system’s document viewer, from whose dialog the user prints. Returns at once. */
export function printPath(path: string): void;

/** Hands a page to an application, by its name in `installedClipperApps()`. Returns at once. */
export function clipPage(application: string, page: ClippedPage): void;

/** The names that `clipPage` takes and whose applications are installed: a JSON array. */
export function installedClipperApps(): JSONText | null;

/**
 * Sets the function that tells a time tracker what the user is at work on: a JSON array of strings. The first one stays.
 */
export function registerAppleEventForTimingApp(callback: () => JSONText): void;

/** Removes the application’s entry among the PDF services, which every start makes anew. */
export function uninstallPDFServices(): void;

// ---- Mail composition from other applications, contacts

/** Sets the function that receives the text another application wants to be searched for. */
export function setSearchServiceCallbackFunction(callback: (text: string) => void): void;

/**
 * Sets the function that receives the messages other applications compose, by scripting, services and mailto links.
 * What comes before it is set is dropped.
 * @param callback Receives the texts of an {@link OutgoingMessage} and of its {@link OutgoingMessageOptions}.
 */
export function setComposeOutgoingMessageCallbackFunction(
  callback: (message: JSONText, options: JSONText) => void,
): void;

/** JSON of a message that another application composes. */
export interface OutgoingMessage {
  sender?: string;
  subject?: string;
  /** Ends with a line feed. */
  body?: string;
  to: OutgoingRecipient[];
  cc: OutgoingRecipient[];
  bcc: OutgoingRecipient[];
  'attachment-paths': string[];
}

export interface OutgoingRecipient {
  name: string | null;
  email: string | null;
}

/** null is what the other application has not decided. */
export interface OutgoingMessageOptions {
  'optimize-attachments?': boolean | null;
  'directly-send?': boolean;
  'image-attach-method': string | null;
  'image-file-type': string | null;
  'image-size': string | null;
}

/**
 * Has a service of another application work on the text, and waits for it. Its result is ignored; failures are logged.
 * @param name The service's path in the Services menu, as "Mailer/Mail To".
 */
export function performService(name: string, text: string): void;

/**
 * Opens the window in which the user picks contacts. The addresses that are picked arrive with the notification
 * "TsContactEmailAddressesPicked", under "addresses", as the JSON text of an array.
 * @param translations JSON of an object with "window-title", "accept-button-label", "cancel-button-label" and
 *   "edit-in-contacts-button-label"; those of the first call count.
 */
export function pickEmailAddresses(window: WindowHandle, translations: JSONText): void;

/**
 * The members of the user's first contact group of that name, and of the groups in it.
 * @returns JSON of an array of `{name?, email}`, or null when there is no such group.
 */
export function recipientsForGroupName(name: string): JSONText | null;

// ---- Network

/** Sets the function that learns when the internet connection comes and goes. */
export function setNetworkReachabilityCallbackFunction(callback: (isConnected: boolean) => void): void;

/** Whether there is a way to the internet now. On Linux: whether the kernel's routing has one; false if it can't be asked. */
export function isNetworkReachable(): boolean;

export interface RequestOptions {
  /** Properties whose value is not a string are skipped. */
  headers?: Record<string, unknown>;
  /** "GET" by default. */
  method?: string;
  /** True by default. */
  followRedirects?: boolean;
  /** The longest silence, in seconds, fractions allowed. 60 by default, and when it is not above 0. */
  timeout?: number;
}

/** An HTTP request. Keep a reference until "end" or "error": a request that is collected is cancelled. */
export interface Request {
  /** Set before "response". */
  statusCode?: number;
  /** Set before the "response" that tells of a redirect that is not followed: its absolute target. */
  location?: string;
  /** Set before "end": the whole body. */
  buffer?: ArrayBuffer;

  /**
   * Adds a listener, with exactly two arguments; anything else is ignored.
   *
   * "data" hears of each chunk of the body: it gets as many bytes as have come, always from the _beginning_ of the body.
   */
  on(event: 'response' | 'end', listener: (request: Request) => void): void;
  on(event: 'data', listener: (firstBytes: ArrayBuffer) => void): void;
  on(event: 'error', listener: (description: string) => void): void;

  /** Returns at once. A running request begins anew, a finished one does nothing. */
  start(): void;
}

/** Makes a request of http or https, without cookies; nothing is sent before `start()`. Any other URL is an "error". */
export function createRequest(url: string, options?: RequestOptions | null): Request;

// ---- User defaults, start at login

/**
 * Stores a boolean, a 32-bit integer or a string under the key of the application's preferences; null removes the key.
 * Any other value is refused, and the log says so.
 */
export function setUserDefault(key: string, value: boolean | number | string | null): void;

/**
 * The value of a key of the application's preferences; null when there is none, or one of another type. A number that
 * equals its truth value reads as that: 0 is false, 1 is true. Any other one is truncated to 32 bits.
 */
export function getUserDefault(key: string): string | boolean | number | null;

export function removeUserDefault(key: string): void;

/** Writes what has been set. Until then it may be lost with the process. */
export function synchronizeUserDefaults(): void;

/** Whether the session starts this application at login. */
export function getStartAtLogin(): boolean;

/** Removes the login item of the application's previous major version, the first one if there are several. */
export function migrateStartAtLogin(): void;

/** Whether the session starts this application at login after the change, which may not have been possible. */
export function setStartAtLogin(start: boolean): boolean;

/**
 * The user's text replacements and substitution switches: `{"text-replacements", "dash-substitution?",
 * "period-substitution?"}`. What nobody has set is left out. null when the preferences hold what JSON can't.
 */
export function getTextReplacements(): JSONText | null;

// ---- Status item

/** The text beside the status item's icon, usually the number of unread messages, and whether an account is in error. */
export function setStatusItemTitle(title: string | null, isInError: boolean | null): void;

/**
 * Sets the function that describes the account menu, as JSON, each time it is about to open: of the status item, with
 * messages, or of the Dock, without. `docs/api/status-item.md` tells the keys.
 */
export function setStatusItemMenuNeedsUpdateCallbackFunction(
  callback: (type: 'status-item' | 'dock', includeMessages: boolean) => JSONText,
): void;

// ---- Updates, crash events, migration

/**
 * From now on crashes are recorded, log messages are posted as breadcrumbs, and the crashes of earlier processes are
 * posted, once: "TsSentryBreadcrumbNotification" and "TsSentryEventNotification". The host sends them; the module sends
 * nothing. Calling again does nothing.
 */
export function setupCrashReporter(): void;

/** Crashes, if the crash reporter was set up: the process ends. */
export function testCrash(): void;

/**
 * Looks for updates.
 * @param inBackground `false`: the user has asked, and a window shows what was found, with Install, Skip and Later. In
 *   the background, an update is installed if the user default "SUAutomaticallyUpdate" says so.
 * @param automatically In the background only: whether checks are made every 12 hours from now on, in later processes
 *   too.
 */
export function checkForUpdates(inBackground: boolean, automatically: boolean): void;

/**
 * Sets the function that adds parameters to each request for the update feed: a JSON array of
 * `{"key", "value", "displayKey", "displayValue"}`, all texts. Its argument tells whether the request carries the system
 * profile, once a week if the user default "SUSendProfileInfo" wants it.
 */
export function setAppcastParameterCallback(callback: (isSendingProfile: boolean) => JSONText): void;

/** Asks for the update feed, which is posted as "TsReceivedAppcastNotification", and does nothing else with it. */
export function fetchAppcast(): void;

/** The build's version, "CFBundleVersion" of the main bundle; `null` when there is none. */
export function getBuildNumber(): string | null;

/** The version that people know, and the build's: "3.1 (412)". */
export function getReleaseString(): string;

/** Whether the previous major version has left a file of accounts behind, with at least one account in it. */
export function hasPreviousVersion(): boolean;

/**
 * What the previous major version has left behind, for a {@link MigrationReport}. Waits for the keychain, and for the
 * person when it has to be opened.
 * @param selection A text that contains the names of the wanted sections: "accounts", "workspaces", "prefs". All of
 *   them when there is no text, none when it is empty.
 * @returns `null` when a tab belongs to an unknown application, or a preference has no form in JSON, as a date.
 */
export function getMigrationInfo(selection: string | null | undefined): JSONText | null;

/** Sections that were not selected are missing. */
export interface MigrationReport {
  /** Whether there is a file of accounts, with or without accounts. */
  'has-previous-version?': boolean;
  /** By "order", then by "username". */
  accounts?: MigratedAccount[];
  /** The one that was updated last comes first. */
  workspaces?: { 'active?': boolean | null; tabs: MigratedTab[] }[];
  /** The preferences that are carried over, as they were stored. */
  prefs?: Record<string, unknown>;
}

/** What the previous version has never set is `null`. */
export interface MigratedAccount {
  order: number | null;
  /** The e-mail address. */
  username: string | null;
  nickname: string | null;
  /** In clear, from the keychain. */
  password: string | null;
  detectUnreadCountType: boolean | null;
  defaultInboxType: number | null;
  customInboxLabelName: string | null;
  isNotificationEnabled: boolean | null;
  unreadMessagesLocation: number | null;
  /** Addresses with commas between them. */
  autoBCC: string | null;
  notificationSound: string | null;
  isNotifyNewMessages: boolean | null;
  loadRapportivePlugin: boolean | null;
  loadClearbitConnectPlugin: boolean | null;
  loadBoomerangPlugin: boolean | null;
  loadStreakPlugin: boolean | null;
  loadRightInboxPlugin: boolean | null;
  isGmailChatBlockedAsBOOL: boolean;
  isGooglePlusBlockedAsBOOL: boolean;
  isGoogleDriveBlockedAsBOOL: boolean;
  isGoogleCalendarAlertsBlockedAsBOOL: boolean;
  numberOfDownloadItems: number;
  /** In no particular order: sort them by `order`. */
  bookmarks: { order: number | null; title: string | null; url: string | null }[];
}

export interface MigratedTab {
  /** The account's e-mail address. */
  email: string;
  app: 'Gmail' | 'GoogleInbox' | 'Calendar' | 'Contacts';
}

// ---- Global shortcuts

/**
 * Records what the user types next as the shortcut of a user default, and takes away the one that is stored there. The
 * host observes how it goes: see docs/api/keyboard.md. Refused, with an error in the log, while another recording is running.
 */
export function startMonitoringKeyboardShortcuts(defaultsKey: string): void;

/** Ends the recording, and puts back what was stored when it began, even if a shortcut was accepted meanwhile. */
export function stopMonitoringKeyboardShortcuts(): void;

/**
 * Has the shortcut heard in every application that is stored under the key, now or later. The host observes
 * "TsGlobalShortcutAction" for each press.
 */
export function bindGlobalShortcutWithDefaultsKey(defaultsKey: string): void;

/** The stored shortcut as people write it, "⇧⌘M"; `null` when there is none. */
export function globalShortcutDescriptionForDefaultsKey(defaultsKey: string): string | null;
