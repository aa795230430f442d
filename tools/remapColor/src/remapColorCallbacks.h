#pragma once

// The callback classes that the library shares with a curve editor. Those who include this use the
// library's own copies of the members listed here.

#include "callbacks/CbDispatcher.h"
#include "callbacks/CbHandler.h"
#include "primitives/CoColor.h"
#include "remapColorExport.h"

// Types in parentheses are none. NOLINTBEGIN(bugprone-macro-parentheses)
// clang-format off
#define REMAPCOLOR_COLOUR_CALLBACKS(INSTANTIATE, COLOUR)                                           \
    INSTANTIATE CbDispatcher<COLOUR const>::CbDispatcher();                                        \
    INSTANTIATE CbDispatcher<COLOUR const>::~CbDispatcher();                                       \
    INSTANTIATE void CbDispatcher<COLOUR const>::addHandler(CbHandler<COLOUR const>*);             \
    INSTANTIATE void CbDispatcher<COLOUR const>::prependHandler(CbHandler<COLOUR const>*);         \
    INSTANTIATE void CbDispatcher<COLOUR const>::insertHandler(CbHandler<COLOUR const>*);          \
    INSTANTIATE void CbDispatcher<COLOUR const>::removeHandler(CbHandler<COLOUR const>*);          \
    INSTANTIATE void CbDispatcher<COLOUR const>::removeAllHandlers();                              \
    INSTANTIATE bool CbDispatcher<COLOUR const>::isHandlerSubscribed(                              \
        CbHandler<COLOUR const>*) const;                                                           \
    INSTANTIATE bool CbDispatcher<COLOUR const>::isEmpty() const;                                  \
    INSTANTIATE int CbDispatcher<COLOUR const>::getNbHandlers() const;                             \
    INSTANTIATE void CbDispatcher<COLOUR const>::call(COLOUR const&);                              \
    INSTANTIATE void CbDispatcher<COLOUR const>::call();                                           \
    INSTANTIATE CbHandler<COLOUR const>::CbHandler();                                              \
    INSTANTIATE CbHandler<COLOUR const>::~CbHandler();                                             \
    INSTANTIATE void CbHandler<COLOUR const>::addDispatcher(CbDispatcher<COLOUR const>*);          \
    INSTANTIATE void CbHandler<COLOUR const>::removeDispatcher(CbDispatcher<COLOUR const>*);       \
    INSTANTIATE void CbHandler<COLOUR const>::call(COLOUR const&);                                 \
    INSTANTIATE void CbHandler<COLOUR const>::call();                                              \
    INSTANTIATE int CbHandler<COLOUR const>::getNbDispatchers() const;                             \
    INSTANTIATE void CbHandler<COLOUR const>::reset();

#define REMAPCOLOR_PIXEL_CALLBACKS(INSTANTIATE, PIXEL)                                             \
    INSTANTIATE CbDispatcher<PIXEL>::CbDispatcher();                                               \
    INSTANTIATE CbDispatcher<PIXEL>::~CbDispatcher();                                              \
    INSTANTIATE void CbDispatcher<PIXEL>::addHandler(CbHandler<PIXEL>*);                           \
    INSTANTIATE void CbDispatcher<PIXEL>::removeHandler(CbHandler<PIXEL>*);                        \
    INSTANTIATE void CbDispatcher<PIXEL>::call(PIXEL&);                                            \
    INSTANTIATE CbHandler<PIXEL>::CbHandler();                                                     \
    INSTANTIATE CbHandler<PIXEL>::~CbHandler();                                                    \
    INSTANTIATE void CbHandler<PIXEL>::addDispatcher(CbDispatcher<PIXEL>*);                        \
    INSTANTIATE void CbHandler<PIXEL>::removeDispatcher(CbDispatcher<PIXEL>*);                     \
    INSTANTIATE void CbHandler<PIXEL>::reset();

#define REMAPCOLOR_EMPTY_CALLBACKS(INSTANTIATE)                                                    \
    INSTANTIATE CbDispatcher<CbEmptyType>::CbDispatcher();                                         \
    INSTANTIATE CbDispatcher<CbEmptyType>::~CbDispatcher();                                        \
    INSTANTIATE void CbDispatcher<CbEmptyType>::addHandler(CbHandler<CbEmptyType>*);               \
    INSTANTIATE void CbDispatcher<CbEmptyType>::call();                                            \
    INSTANTIATE void CbHandler<CbEmptyType>::addDispatcher(CbDispatcher<CbEmptyType>*);            \
    INSTANTIATE void CbHandler<CbEmptyType>::removeDispatcher(CbDispatcher<CbEmptyType>*);         \
    INSTANTIATE void CbHandler<CbEmptyType>::call();

#define REMAPCOLOR_CALLBACKS(INSTANTIATE)                                                          \
    REMAPCOLOR_COLOUR_CALLBACKS(INSTANTIATE, CoRgbColorTyped<float>)                               \
    REMAPCOLOR_PIXEL_CALLBACKS(INSTANTIATE, CoRgbaColorTyped<float>)                               \
    REMAPCOLOR_EMPTY_CALLBACKS(INSTANTIATE)
// clang-format on
// NOLINTEND(bugprone-macro-parentheses)

REMAPCOLOR_CALLBACKS(extern template REMAPCOLOR_EXPORT)
