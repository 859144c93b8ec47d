#pragma once

// The slots of the module.
enum class TsSlot {
  CurrentState,
  ComposeOutgoingMessage,
  SearchService,
  Reachability,
  WindowNotification,
  QueryWindowTrait,
  DragAndDrop,
  KeyboardModifierKeys,
  NotificationActivation,
  StatusItemMenuNeedsUpdate,
  AppcastParameter,
  ToolbarValidation,
  ToolbarAction,
  ToolbarAddTab,
  TimeTracker,
  Count
};
