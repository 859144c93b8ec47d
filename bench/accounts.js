'use strict';

/** Many accounts of all kinds of values, for reports of any size. */
function manyAccounts(count, bookmarksEach) {
  const plugins = ['Rapportive', 'ClearbitConnect', 'Boomerang', 'Streak', 'AwayFind', 'RightInbox'];
  return Array.from({ length: count }, (_account, i) => ({
    order: i,
    username: `person-${i}@example.org`,
    nickname: `Persön <${i}> & "friends"`,
    colorData: Buffer.from(`colour ${i} `.repeat(20)),
    detectUnreadCountType: i % 2 === 0,
    defaultInboxType: i % 4,
    customInboxLabelName: `Label ${i}`,
    autoAuthenticate: i % 3 === 0,
    unreadMessagesLocation: i % 2,
    autoBCC: `archive-${i}@example.org, boss@example.org`,
    notificationSound: 'Glass',
    notificationUseGrowl: true,
    ...Object.fromEntries(plugins.map((name, k) => [`load${name}Plugin`, (i + k) % 5 === 0])),
    isGmailChatBlocked: true,
    isGoogleDriveBlocked: i % 7 === 0,
    useSignatures: true,
    bookmarks: Array.from({ length: bookmarksEach }, (_bookmark, k) => ({
      order: (k + 1) * 10,
      title: `Bookmark ${k} of person ${i} – überall`,
      url: `https://mail.example.org/mail/u/${i}/?view=cm&fs=1&label=${k}#search/in%3Ainbox`,
    })),
  }));
}

module.exports = manyAccounts;
