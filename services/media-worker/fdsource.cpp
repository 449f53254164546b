// SPDX-License-Identifier: GPL-3.0-or-later
#include "fdsource.h"

#include <gst/base/gstbasesrc.h>
#include <gst/base/gsttypefindhelper.h>

#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

namespace {

struct FdSource
{
    GstBaseSrc parent;
    int descriptor;
};

struct FdSourceClass
{
    GstBaseSrcClass parent;
};

G_DEFINE_TYPE(FdSource, fd_source, GST_TYPE_BASE_SRC)

gboolean getSize(GstBaseSrc *base, guint64 *size)
{
    struct stat status = {};
    if (fstat(reinterpret_cast<FdSource *>(base)->descriptor, &status) != 0)
        return FALSE;
    *size = static_cast<guint64>(status.st_size);
    return TRUE;
}

gboolean isSeekable(GstBaseSrc *)
{
    return TRUE;
}

GstFlowReturn fill(GstBaseSrc *base, guint64 offset, guint length, GstBuffer *buffer)
{
    GstMapInfo map = {};
    if (!gst_buffer_map(buffer, &map, GST_MAP_WRITE))
        return GST_FLOW_ERROR;
    const gssize count = readAt(reinterpret_cast<FdSource *>(base)->descriptor, offset, map.data, length);
    gst_buffer_unmap(buffer, &map);
    if (count < 0) {
        GST_ELEMENT_ERROR(base, RESOURCE, READ, (nullptr), ("read: %s", g_strerror(errno)));
        return GST_FLOW_ERROR;
    }
    if (count == 0 && length > 0)
        return GST_FLOW_EOS;
    gst_buffer_resize(buffer, 0, count);
    // Demuxers of packets find their way by these.
    GST_BUFFER_OFFSET(buffer) = offset;
    GST_BUFFER_OFFSET_END(buffer) = offset + static_cast<guint64>(count);
    return GST_FLOW_OK;
}

void fd_source_init(FdSource *source)
{
    source->descriptor = -1;
}

void fd_source_class_init(FdSourceClass *klass)
{
    static GstStaticPadTemplate source
        = GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS_ANY);
    gst_element_class_add_static_pad_template(GST_ELEMENT_CLASS(klass), &source);
    gst_element_class_set_static_metadata(GST_ELEMENT_CLASS(klass), "Open file", "Source/File",
                                          "Reads an open file at random", "Kestrel");
    klass->parent.get_size = getSize;
    klass->parent.is_seekable = isSeekable;
    klass->parent.fill = fill;
}

// A type may be marked at the end of the file too, so the type finder reads at random.
GstFlowReturn readForTypeFind(GstObject *input, GstObject *, guint64 offset, guint length, GstBuffer **buffer)
{
    GstBuffer *const piece = gst_buffer_new_allocate(nullptr, length, nullptr);
    GstMapInfo map = {};
    gst_buffer_map(piece, &map, GST_MAP_WRITE);
    const gssize count = readAt(reinterpret_cast<FdSource *>(input)->descriptor, offset, map.data, length);
    gst_buffer_unmap(piece, &map);
    if (count <= 0) {
        gst_buffer_unref(piece);
        return count == 0 ? GST_FLOW_EOS : GST_FLOW_ERROR;
    }
    gst_buffer_resize(piece, 0, count);
    *buffer = piece;
    return GST_FLOW_OK;
}

} // namespace

GstElement *newFdSource(int descriptor)
{
    auto *const source = static_cast<FdSource *>(g_object_new(fd_source_get_type(), nullptr));
    source->descriptor = descriptor;
    // Large enough that a demuxer which asks for little at a time costs few system calls.
    gst_base_src_set_blocksize(&source->parent, 64 * 1024);
    return GST_ELEMENT(source);
}

CapsPointer findType(int descriptor)
{
    struct stat status = {};
    if (fstat(descriptor, &status) != 0 || status.st_size <= 0)
        return nullptr;
    const ElementPointer source(GST_ELEMENT(gst_object_ref_sink(newFdSource(descriptor))));
    GstTypeFindProbability probability = GST_TYPE_FIND_NONE;
    GstCaps *caps = nullptr;
    gst_type_find_helper_get_range_full(GST_OBJECT(source.get()), GST_OBJECT(source.get()), readForTypeFind,
                                        static_cast<guint64>(status.st_size), nullptr, &caps, &probability);
    return CapsPointer(caps);
}

gssize readAt(int descriptor, guint64 offset, guint8 *data, gsize size)
{
    gsize done = 0;
    while (done < size) {
        const ssize_t count = pread(descriptor, data + done, size - done, static_cast<off_t>(offset + done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return -1;
        if (count == 0)
            break;
        done += static_cast<gsize>(count);
    }
    return static_cast<gssize>(done);
}
