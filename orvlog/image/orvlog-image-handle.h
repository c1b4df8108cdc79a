// What a renderer holds of a wrapped image, and how the logger knows it again.
//
// A renderer may come back with a record whose image is gone: it releases twice, or has not heard that the session
// was closed. So no record that a callback is given is looked into before it has been found here by its address.
// The list is the one thing of the image callbacks that sessions share, since a record alone does not tell whose it
// is; each of its buckets is guarded by a flag that is held for a few steps.

#pragma once

#include "holv-core/gmm/gmm-allocator.h"
#include "orvlog/interface/gop-image.h"

struct ORVLOG_ImageWrapper;

struct ORVLOG_ImageHandle
{
    GOP_OperandImagePointer record;   // what the renderer sees, and may write to
    GOP_OperandImage image;           // what `record` points at
    ORVLOG_ImageWrapper* wrapper;     // null once the image is gone, and so is the record's context
    ORVLOG_ImageHandle* next_known;   // in the bucket
    ORVLOG_ImageHandle* next_record;  // of the same image, set when the image goes
    ORVLOG_ImageHandle* next_image;   // in the session's list of images that were kept
    GMM_Allocator* allocator;         // whose block this is; null: the image's private one
};

// The record must not be known yet, and be forgotten before its block is given back.
void orvlog_image_handle_enter(ORVLOG_ImageHandle* handle);
void orvlog_image_handle_leave(const ORVLOG_ImageHandle* handle);

// The handle of a record that is known, or null. The record itself is not read.
ORVLOG_ImageHandle* orvlog_image_handle_find(const GOP_OperandImagePointer* record);
