#ifndef TESSEL_GRAFLIB_CFILTERBILINEARFLOAT_H
#define TESSEL_GRAFLIB_CFILTERBILINEARFLOAT_H

/// A separable box filter in floating point: the horizontal stage sums each source row under every
/// destination column, the vertical stage sums these sums under every destination row and divides
/// by the footprint's area. Partly covered samples count by the part that is covered. Positions are
/// running sums in F, and results are cut, not rounded: flat areas may come out one step darker.
///
/// The filter works on any array of interleaved samples (component 0, 1, ... of pixel 0, then of
/// pixel 1, ...) and knows nothing of images. T is the sample type, F the type it computes in; it
/// exists for T = unsigned char and T = short, with F = float, and gives the same bits with any
/// compiler that keeps to IEEE single precision. An object is used for one call after the other,
/// by one thread at a time; the source stays with the caller and is only read.
template <typename T, typename F>
class CFilterBilinearFloat
{
public:
    /// Resizes `source` and returns the result, `dstWidth * dstHeight * components` samples in a
    /// new array that is a little larger and belongs to the caller (`delete[]`).
    ///
    /// `srcLineWidth` is the distance from one source row to the next, in pixels. `progress` may
    /// be null; it is called before each of the two stages of every component. Returns null when a
    /// side is below 1, and, after a line on standard output, when memory runs out.
    T* DownScale(T* source, int srcWidth, int srcHeight, int dstWidth, int dstHeight,
                 int components, int srcLineWidth, void (*progress)());

    /// The horizontal stage for one component, into mResultVectorX: row after row of mDstWidth
    /// sums, whose weights add up to mScaleX.
    void BilinearStageX(int component);
    /// The vertical stage for the same component, from there into mResultVectorY.
    void BilinearStageY(int component);

    // What DownScale fills in before it runs the stages. Who calls a stage alone fills it in
    // likewise: mResultVectorX has room for mSrcHeight + 1 rows of mDstWidth sums.
    int mSrcWidth = 0;              ///< pixels
    int mSrcHeight = 0;             ///< rows
    int mSrcLineWidth = 0;          ///< pixels from one source row to the next
    int mDstWidth = 0;              ///< pixels
    int mDstHeight = 0;             ///< rows
    int mComponents = 0;            ///< samples per pixel
    F mScaleX = 0;                  ///< source pixels per destination pixel
    F mScaleY = 0;                  ///< source rows per destination row
    F* mResultVectorX = nullptr;    ///< one component's rows and one more; null outside a call
    T* mResultVectorY = nullptr;    ///< the result; null outside a call
    T* mSource = nullptr;           ///< the source's samples, only read
    void (*mProgress)() = nullptr;  ///< called before each stage; may be null

private:
    F RowSum(const T* samples, F start, F end) const;
    void AddRows(F* sums, F start, F end) const;
    void RunStages();
};

extern template class CFilterBilinearFloat<unsigned char, float>;
extern template class CFilterBilinearFloat<short, float>;

#endif
