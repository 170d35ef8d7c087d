const UNITS = ['KB', 'MB', 'GB', 'TB'];

/**
 * "0 bytes", "48 KB", "4.8 MB": powers of ten, one decimal below a hundred from megabytes on and below ten for
 * kilobytes.
 */
export function formatSize(bytes: number | null): string {
    if (bytes === null || bytes < 0) return '—';
    if (bytes < 1000) return bytes === 1 ? '1 byte' : `${bytes} bytes`;
    let value = bytes,
        unit = -1;
    // 999,950 bytes would print as "1000 KB".
    do {
        value /= 1000;
        unit++;
    } while (Math.round(value) >= 1000 && unit < UNITS.length - 1);
    const decimals = value < (unit === 0 ? 9.95 : 99.95) ? 1 : 0;
    return `${value.toFixed(decimals)} ${UNITS[unit]}`;
}

const dateFormat = new Intl.DateTimeFormat('en-GB', {
    day: 'numeric',
    month: 'short',
    year: 'numeric',
    hour: '2-digit',
    minute: '2-digit',
});
const LATEST_DATE = 8.64e15;

/** "14 Nov 2026, 09:12" in local time; a dash for an unknown time. */
export function formatDate(milliseconds: number): string {
    return milliseconds > 0 && milliseconds <= LATEST_DATE ? dateFormat.format(milliseconds) : '—';
}

/** "0:14", "1:02:03". */
export function formatDuration(seconds: number): string {
    const whole = Number.isFinite(seconds) ? Math.max(0, Math.floor(seconds)) : 0;
    const two = (value: number) => String(value).padStart(2, '0');
    const hours = Math.floor(whole / 3600),
        minutes = Math.floor(whole / 60) % 60;
    return hours ? `${hours}:${two(minutes)}:${two(whole % 60)}` : `${minutes}:${two(whole % 60)}`;
}

const numberFormat = new Intl.NumberFormat('en-GB');

/** "12,480 items", "1 item". */
export function formatCount(count: number, one: string, many = `${one}s`): string {
    return `${numberFormat.format(count)} ${count === 1 ? one : many}`;
}
