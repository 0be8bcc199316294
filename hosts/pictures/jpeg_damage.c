#include "jpeg_damage.h"

#include <setjmp.h>
#include <stdio.h>

/* After the above: the library's header needs FILE. */
#include <jpeglib.h>
/* After the library's header, too. */
#include <jerror.h>

typedef struct {
    struct jpeg_error_mgr manager; /* first, so that the library's pointer is one to this */
    jmp_buf give_up;
    char* text;
    int damaged;
} Watch;

static void note(j_common_ptr info) {
    Watch* watch = (Watch*)info->err;
    if (!watch->damaged) {
        char words[JMSG_LENGTH_MAX];
        watch->manager.format_message(info, words);
        snprintf(watch->text, SEGCORE_DAMAGE_TEXT_SIZE, "%s", words);
        watch->damaged = 1;
    }
}

static void on_error(j_common_ptr info) {
    note(info);
    longjmp(((Watch*)info->err)->give_up, 1);
}

static void on_message(j_common_ptr info, int level) {
    /* Below 0 are warnings. Those of notes beside the picture take nothing from it. */
    const int code = info->err->msg_code;
    if (level < 0 && code != JWRN_ADOBE_XFORM && code != JWRN_BOGUS_ICC &&
        code != JWRN_JFIF_MAJOR) {
        note(info);
    }
}

static void read_picture(struct jpeg_decompress_struct* info) {
    jpeg_read_header(info, TRUE);
    /* Every code of the file is read at any size; at an eighth nearly nothing else is done. */
    info->scale_num = 1;
    info->scale_denom = 8;
    info->do_fancy_upsampling = FALSE;
    jpeg_start_decompress(info);
    JSAMPARRAY row =
        info->mem->alloc_sarray((j_common_ptr)info, JPOOL_IMAGE,
                                info->output_width * (JDIMENSION)info->output_components, 1);
    while (info->output_scanline < info->output_height) {
        jpeg_read_scanlines(info, row, 1);
    }
    jpeg_finish_decompress(info);
}

int segcore_jpeg_damage(const uint8_t* bytes, size_t size, char text[SEGCORE_DAMAGE_TEXT_SIZE]) {
    struct jpeg_decompress_struct info = {0};
    Watch watch;
    info.err = jpeg_std_error(&watch.manager);
    watch.manager.error_exit = on_error;
    watch.manager.emit_message = on_message;
    watch.text = text;
    watch.damaged = 0;
    if (setjmp(watch.give_up) == 0) {
        jpeg_create_decompress(&info);
        jpeg_mem_src(&info, bytes, (unsigned long)size);
        read_picture(&info);
    }
    jpeg_destroy_decompress(&info);
    return watch.damaged;
}
