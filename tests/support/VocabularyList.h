#ifndef VOCABULARYLIST_H
#define VOCABULARYLIST_H

#include <AdvancedAirwayTypes.h>
#include <AirwayBlockageTypes.h>
#include <BLSService.h>
#include <Battery.h>
#include <BreathingPatternTypes.h>
#include <CapillaryRefillTypes.h>
#include <ChestRiseTypes.h>
#include <EnlargedLiverTypes.h>
#include <Eyes.h>
#include <FontanelleTypes.h>
#include <HeadLimpTypes.h>
#include <HeadSeizureTypes.h>
#include <HeadTiltStateTypes.h>
#include <LaryngospasmTypes.h>
#include <LungComplianceTypes.h>
#include <MovementTypes.h>
#include <PharyngealObstructionTypes.h>
#include <Product.h>
#include <TracheostomaTypes.h>

/// The meta-objects of all manikin state and product enumerations.
inline const QMetaObject *const vocabulary[] = {
    &AdvancedAirwayTypes::staticMetaObject,
    &AirwayBlockageTypes::staticMetaObject,
    &BLSService::staticMetaObject,
    &Battery::staticMetaObject,
    &BreathingPatternTypes::staticMetaObject,
    &CapillaryRefillTypes::staticMetaObject,
    &ChestRiseTypes::staticMetaObject,
    &EnlargedLiverTypes::staticMetaObject,
    &Eyes::staticMetaObject,
    &FontanelleTypes::staticMetaObject,
    &HeadLimpTypes::staticMetaObject,
    &HeadSeizureTypes::staticMetaObject,
    &HeadTiltStateTypes::staticMetaObject,
    &LaryngospasmTypes::staticMetaObject,
    &LungComplianceTypes::staticMetaObject,
    &MovementTypes::staticMetaObject,
    &PharyngealObstructionTypes::staticMetaObject,
    &BM_HXCommon::Product::staticMetaObject,
    &TracheostomaTypes::staticMetaObject,
};

#endif
