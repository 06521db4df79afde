/// The bodies of stb's decoders, its scaler and its encoder, with bounded memory of their own.
#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

#include "tools/page/camera_picture.h"

namespace {

// Limited, because a file of a few bytes may claim gigabytes. Each thread has its own limit.
thread_local std::size_t heldBytes = 0;

/// Stands before each block, so that the size is known when it is freed.
struct alignas(std::max_align_t) BlockHead {
  std::size_t size;
};

/// The memory is all zeros, because the JPEG decoder uses code tables that a damaged picture has never defined. Zeros
/// are a table without codes; anything else sends the decoder outside its arrays.
void* Allocate(std::size_t size) {
  if (size > tarnfind::kMostPictureMemory - heldBytes) return nullptr;
  void* const block = std::calloc(1, sizeof(BlockHead) + size);
  if (!block) return nullptr;
  heldBytes += size;
  return new (block) BlockHead{size} + 1;
}

void Free(void* memory) {
  if (!memory) return;
  BlockHead* const head = static_cast<BlockHead*>(memory) - 1;
  heldBytes -= head->size;
  std::free(head);
}

void* Reallocate(void* memory, std::size_t oldSize, std::size_t newSize) {
  void* const fresh = Allocate(newSize);
  if (!fresh) return nullptr;
  if (memory) std::memcpy(fresh, memory, std::min(oldSize, newSize));
  Free(memory);
  return fresh;
}

}  // namespace

#define STBI_MALLOC(size) Allocate(size)
#define STBI_REALLOC_SIZED(memory, oldSize, newSize) Reallocate(memory, oldSize, newSize)
#define STBI_FREE(memory) Free(memory)
#define STBI_MAX_DIMENSIONS 16384
#define STBI_NO_STDIO
#define STBI_NO_LINEAR
#define STBI_NO_HDR
#define STBI_ONLY_JPEG
#define STBI_ONLY_PNG
#define STBI_ONLY_BMP
#define STB_IMAGE_IMPLEMENTATION
#include <stb/stb_image.h>

#define STBIR_MALLOC(size, context) ((void)(context), Allocate(size))
#define STBIR_FREE(memory, context) ((void)(context), Free(memory))
#define STB_IMAGE_RESIZE_IMPLEMENTATION
#include <stb/stb_image_resize.h>

#define STBI_WRITE_NO_STDIO
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>
