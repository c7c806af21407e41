/*
 * Records a raw H.264 stream into an MP4 file that plays while it is still loading.
 *
 *     record 640 360 25 camera.h264 camera.mp4
 */
#include <stdio.h>
#include <stdlib.h>
#include <wrapton/Wrapton.h>

struct output
{
    FILE* file;
    int failed;
};

/* Every byte of the MP4 arrives here, with the place in the file where it belongs. */
static void write_block(SGOutputData* block, void* user)
{
    struct output* out = user;
    size_t size = (size_t)block->data_size;

    if (fseek(out->file, (long)block->offset_pos64, block->offset_type) != 0 ||
        fwrite(block->data_pointer, 1, size, out->file) != size)
    {
        out->failed = 1;
    }
}

/* The bytes of the first picture in the stream, and whether it can be decoded on its own. */
static size_t first_picture(const unsigned char* stream, size_t size, int* is_key)
{
    int seen = 0;

    *is_key = 0;
    for (size_t i = 0; i + 4 < size; ++i)
    {
        if (stream[i] != 0 || stream[i + 1] != 0 || stream[i + 2] != 1) continue;

        int type = stream[i + 3] & 31;
        int is_slice = type >= 1 && type <= 5;
        int begins = is_slice ? stream[i + 4] >= 0x80 : type >= 6 && type <= 9;
        if (seen && begins) return i - (stream[i - 1] == 0);
        seen |= is_slice;
        *is_key |= type == 5;
    }
    return size;
}

static unsigned char* read_file(const char* name, size_t* size)
{
    unsigned char* bytes = NULL;
    FILE* file = fopen(name, "rb");

    if (file != NULL && fseek(file, 0, SEEK_END) == 0)
    {
        *size = (size_t)ftell(file);
        bytes = malloc(*size + 1);
        rewind(file);
        if (bytes != NULL && fread(bytes, 1, *size, file) != *size) *size = 0;
    }
    if (file != NULL) fclose(file);
    return bytes;
}

int main(int argc, char** argv)
{
    size_t left = 0;
    unsigned char* stream = argc == 6 ? read_file(argv[4], &left) : NULL;
    struct output out = {stream != NULL && left > 0 ? fopen(argv[5], "wb") : NULL, 0};
    if (out.file == NULL)
    {
        free(stream);
        fputs("usage: record WIDTH HEIGHT FRAMES_PER_SECOND INPUT.h264 OUTPUT.mp4\n", stderr);
        return 2;
    }

    SGCreateParam create = {.struct_size = sizeof(create), .user = &out, .sg_datacb = write_block};
    SGHeaderInfo header = {.pre_header_len = 64 * 1024}; /* room for the index, ahead of the data */
    SGFrameInfo frame = {.struct_size = sizeof(frame),
                         .frame_pointer = stream,
                         .frame_type = SG_FRAME_TYPE_VIDEO,
                         .frame_encode = SG_ENCODE_VIDEO_HI_H264,
                         .width = (uint32_t)strtoul(argv[1], NULL, 10),
                         .heigth = (uint32_t)strtoul(argv[2], NULL, 10),
                         .frame_rate = (uint32_t)strtoul(argv[3], NULL, 10)};

    void* mp4 = SG_CreateHandle(SG_STREAM_TYPE_MP4, &create);
    int error = SG_CreateHeader(mp4, &header);
    while (error == SG_ERR_NOERR && left > 0)
    {
        int is_key;
        frame.frame_size = (uint32_t)first_picture(frame.frame_pointer, left, &is_key);
        frame.frame_sub_type = is_key ? SG_FRAME_SUB_TYPE_I : SG_FRAME_SUB_TYPE_P;
        error = SG_InputFrame(mp4, &frame);
        frame.frame_pointer += frame.frame_size;
        left -= frame.frame_size;
    }
    if (error == SG_ERR_NOERR) error = SG_CreateTailer(mp4, NULL);
    SG_DestroyHandle(mp4);

    free(stream);
    out.failed |= fclose(out.file) != 0;
    if (error != SG_ERR_NOERR || out.failed)
    {
        fprintf(stderr, "record: %s was not written (error %d)\n", argv[5], error);
        return 1;
    }
    return 0;
}
