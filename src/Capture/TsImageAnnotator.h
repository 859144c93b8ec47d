#pragma once

#include "Utilities/TsCallbackSlot.h"

// Opens an editor in which the user draws arrows and boxes on an image, writes on it, and makes parts of it
// unrecognisable. Saving writes a copy, beside the image and in its format, with " annotated" after its name. Images
// that are more than 6000 pixels wide or high are edited, and saved, in that size.
//
// At the end the notification "TsImageAnnotated" is posted, whose user information has the image's path under
// "original" and, if one was saved, that of the copy under "path", and `completion` is called once, with the path of
// the copy or with nil.
void TsAnnotateImage(NSString* path, const TsCompletion& completion);
