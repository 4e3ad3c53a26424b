#ifndef VesselTreeSamplers_h
#define VesselTreeSamplers_h

#include "AbstractVesselTreeSampler.h"

#include <cstdint>

/** Every vessel. */
class EntireVesselTreeSampler : public AbstractVesselTreeSampler
{
protected:
  bool
  samplesVessel(const Vessel & vessel) const override;
};

/** Portal veins (type 2). */
class PortaVesselTreeSampler : public AbstractVesselTreeSampler
{
protected:
  bool
  samplesVessel(const Vessel & vessel) const override;
};

/** Hepatic veins (type 1). */
class HepaVesselTreeSampler : public AbstractVesselTreeSampler
{
protected:
  bool
  samplesVessel(const Vessel & vessel) const override;
};

/** Portal veins whose segment is defined (not 1). */
class OnlyDefinedPortaVesselTreeSampler : public AbstractVesselTreeSampler
{
protected:
  bool
  samplesVessel(const Vessel & vessel) const override;
};

/** Hepatic veins whose segment is defined (not 1). */
class OnlyDefinedHepaVesselTreeSampler : public AbstractVesselTreeSampler
{
protected:
  bool
  samplesVessel(const Vessel & vessel) const override;
};

/** Vessels of one type; with the ignore flag only those whose resection status is defined (not 1). It selects by
 *  the status but does not record it in the samples. */
class ResectionStatusVesselTreeSampler : public AbstractVesselTreeSampler
{
public:
  /** Default true. */
  virtual void
  setIgnoreUndefinedStatus(const bool & ignore);
  virtual bool
  getIgnoreUndefinedStatus() const;
  /** Blood vessel type to sample; default 2 (portal vein). */
  virtual void
  setVesselType(std::int32_t type);
  virtual std::int32_t
  getVesselType() const;

protected:
  bool
  samplesVessel(const Vessel & vessel) const override;

private:
  bool m_ignoreUndefinedStatus{ true };
  std::int32_t m_vesselType{ PortalVein };
};

#endif
